#pragma once

#include "office/NewsData.h"
#include "office/OfficeScreen.h"

class QLabel;

namespace zq {

// "新闻公告": the notice board. Notices are typed here by anyone, or written by the saves of
// reports and meetings; only the supervisor changes or deletes one. Opening the board notes the
// time for the user: what was posted since he last opened it is marked new.
class frmBg_News : public OfficeScreen {
    Q_OBJECT

public:
    explicit frmBg_News(QWidget* parent = nullptr);

    // How many notices were new to the user as the board opened.
    int unread() const { return m_unread; }

protected:
    QString listSql(const QString& filter) const override { return news::ListSql(filter); }
    void beforeList() override;
    void showFields(const Recordset& rs) override;
    void clearFields() override;
    bool mayChange() const override;
    void setEditFields(bool editing) override { Q_UNUSED(editing); }
    void saveRow(int id, const RowSnapshot& loaded) override;
    void deleteRow(int id) override { news::DeleteNotice(id); }
    bool stepButtonsFollowPanels() const override { return false; }

private:
    QString m_opened; // when the user had opened the board before
    int m_unread = 0;
    QLabel* m_lblNew;
    QLabel* m_lblUnread;
};

} // namespace zq
