#pragma once

#include "PersonRecordScreen.h"

namespace zq {

// "主要业绩": the person's achievements (tRsResult) and pay-rise history (tRsTech).
class frmRs_PersonResult : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonResult(QWidget* parent = nullptr);
};

} // namespace zq
