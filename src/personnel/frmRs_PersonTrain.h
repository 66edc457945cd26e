#pragma once

#include "PersonRecordScreen.h"

namespace zq {

// "受训情况": schooling and training before the hire and training after it (tRsStudy by fType).
class frmRs_PersonTrain : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonTrain(QWidget* parent = nullptr);
};

} // namespace zq
