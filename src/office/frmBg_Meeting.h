#pragma once

#include "office/MeetingData.h"
#include "office/OfficeScreen.h"

class QLineEdit;

namespace zq {

// "会议管理": one meeting a row, with a host and a co-host under labels the user may rename for
// one meeting, a reference document, and a notice written on every save when asked for. Anyone who
// sees a meeting may change or delete it.
class frmBg_Meeting : public OfficeScreen {
    Q_OBJECT

public:
    explicit frmBg_Meeting(QWidget* parent = nullptr);

    // A double click on a label box while editing lets the user rename it.
    void txtFoot_DblClick(int index);
    void txtFoot_LostFocus(int index);

protected:
    QString listSql(const QString& filter) const override { return meeting::ListSql(filter); }
    void showFields(const Recordset& rs) override;
    void clearFields() override;
    void setEditFields(bool editing) override;
    void saveRow(int id, const RowSnapshot& loaded) override;
    void deleteRow(int id) override { meeting::DeleteMeeting(id); }
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* m_txtFoot[2];
    QLineEdit* m_txtFootnote[2];
};

} // namespace zq
