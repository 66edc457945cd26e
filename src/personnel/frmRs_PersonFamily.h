#pragma once

#include "PersonRecordScreen.h"
#include "shell/Recordset.h"

class QLineEdit;

namespace zq {

// "家庭情况": the family members of the person in hand in a grid, and the spouse's particulars,
// which only a married person's record holds.
class frmRs_PersonFamily : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonFamily(QWidget* parent = nullptr);

    QLineEdit* txtName(int i) const { return m_txtName[i]; }
    bool married() const { return m_married; }
    void lblName_DblClick(int i);
    void lblName_RightClick(int i);

protected:
    void load() override;
    void save() override;
    void printPart(int part) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QStringList spouseValues() const;

    bool m_married = false;
    RowSnapshot m_spouseLoaded;
    QLabel* m_title0;
    QLabel* m_marryInform;
    QLineEdit* m_txtName[10] = {};
    QLabel* m_lblName[10] = {};
    ZqGrid* m_grid2;
};

} // namespace zq
