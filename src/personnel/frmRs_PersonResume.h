#pragma once

#include "PersonRecordScreen.h"

class QPushButton;

namespace zq {

// "工作简历": the person's jobs before the hire and posts after it (tRsWork by fType). Transfer
// orders add rows after the hire by themselves.
class frmRs_PersonResume : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonResume(QWidget* parent = nullptr);

private:
    // Lies over the second grid to pick a department for its cell; nothing ever sets the flag that
    // would show it.
    QPushButton* m_cmdzy;
    bool m_pickDepartment = false;
};

} // namespace zq
