#include "Globals.h"

namespace zq {

Globals& G() {
    static Globals g;
    return g;
}

} // namespace zq
