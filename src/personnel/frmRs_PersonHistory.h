#pragma once

#include "HistoryScreen.h"

class QComboBox;

namespace zq {

// 变更记录: every recorded change of the person in hand (CurPersonCode), newest first, narrowed by
// field and period. Opened from the staff register beside the record choices; nothing here writes.
// Controls: LabCode, LabName, cboField, and those of HistoryScreen.
class frmRs_PersonHistory : public HistoryScreen {
    Q_OBJECT

public:
    explicit frmRs_PersonHistory(QWidget* parent = nullptr);

protected:
    void load() override;
    void fill() override;
    QStringList printItems() const override;

private:
    QString m_code;
    QString m_name;
    QComboBox* m_field;
};

} // namespace zq
