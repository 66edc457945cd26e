#pragma once

#include "PersonRecordScreen.h"
#include "shell/Recordset.h"

class QComboBox;
class QLineEdit;
class QPlainTextEdit;

namespace zq {

// "历年评语": rewards and penalties in a grid (tRsMeed), and one appraisal a year (tRsRemark) with
// its appraiser, chosen by year from the hire year on. An edit of the appraisal on show is offered
// for saving before another year is shown.
class frmRs_PersonReward : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonReward(QWidget* parent = nullptr);

    void Combo1_Click();
    int remarkYearIndex() const { return m_yearIndex; }
    bool remarkDirty() const { return m_dirty; }
    QComboBox* combo1() const { return m_combo1; }
    QPlainTextEdit* remark() const { return m_remark; }
    QLineEdit* text2() const { return m_text2; }

protected:
    void load() override;
    void save() override;
    QStringList printItems(int part) const override;
    void printPart(int part) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showYear(const QString& year);

    QComboBox* m_combo1;
    QPlainTextEdit* m_remark; // the one large cell of the appraisal
    QLineEdit* m_text2;       // the appraiser
    ZqGrid* m_printGrid;      // the appraisal as a grid for its printout
    RowSnapshot m_loaded; // the appraisal on show as read
    int m_yearIndex = -1;
    bool m_dirty = false;
    bool m_showing = false;
};

} // namespace zq
