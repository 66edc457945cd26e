// Look-ups: GetActivePerson for a hundred serving persons spread over the register.

#include "Bench.h"

#include "services/Lookups.h"
#include "shell/Recordset.h"

#include <QStringList>

namespace {

using zq::bench::Context;

QStringList& codes() {
    static QStringList c;
    return c;
}

constexpr int kLookups = 100;

} // namespace

ZQ_BENCH(
    "person.active",
    [](Context&) {
        for (const QString& code : codes())
            zq::GetActivePerson(code);
    },
    [](Context& c) {
        for (const QString& code : codes())
            zq::bench::readAll(c.raw, "Select fCode,fName,fBmCode,fBmName,fother2,fGzCode,fKqCardID from "
                                      "tRsBasic where fzt=1 and fCode='" +
                                          code + "'");
    },
    [](Context&) {
        codes().clear();
        zq::Recordset rs(zq::conn(), "select fCode from tRsBasic where fzt=1 order by fCode");
        QStringList all;
        for (; !rs.eof(); rs.moveNext())
            all << rs.text(0);
        const int step = std::max(1, int(all.size()) / kLookups);
        for (int i = 0; i < all.size() && codes().size() < kLookups; i += step)
            codes() << all[i];
    });
