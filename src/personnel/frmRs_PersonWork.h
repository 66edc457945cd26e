#pragma once

#include "PersonRecordScreen.h"

namespace zq {

// "本地亲属": one row a period in tRs_WorkState, whose columns the company names in its dictionary.
class frmRs_PersonWork : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonWork(QWidget* parent = nullptr);

protected:
    void load() override;
};

} // namespace zq
