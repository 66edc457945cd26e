#pragma once

#include "assets/HouseData.h"
#include "services/ui/CodeTreeScreen.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace zq {

class ZqGrid;

// "员工住宿管理": the dormitory as a tree of room classes and rooms with head counts, in three
// states: 1 the rooms and their notes, 2 who lives where, 0 a picker the master record opens.
class frmRs_House : public CodeTreeScreen {
    Q_OBJECT

public:
    explicit frmRs_House(QWidget* parent = nullptr);
    ZqGrid* grid() const { return m_grid; }
    // The picker's status line: the room in hand, and a warning when it does not suit the person.
    QString status() const;
    void CmdlistOption_Click();
    void cmdDel_Click() override;
    void cmdPrint_Click() override;

protected:
    void load() override;
    void buildTree() override;
    QIcon entryIcon() const override;
    void nodeChosen(QTreeWidgetItem* node) override;
    void rootChosen() override;
    void showRecord(const RowSnapshot& row) override;
    void clearPage() override;
    QVector<FieldValue> entryValues() const override;
    bool isClass() const override;
    void kindChanged() override;
    void afterSave() override;
    void chkNoListCode_Click() override;
    void publishCurrent() override;
    void nodeDoubleClicked() override;

private:
    void fillResidents(const QString& code);
    // In the picker: each room's kind and places left beside it in the tree.
    void showRoomPlaces();
    void showPickStatus(const QString& code);

    QCheckBox* m_check1;
    QRadioButton* m_optMale[2];
    QLineEdit* m_txtNumber;
    QLabel* m_lblList;
    QPushButton* m_cmdListOption;
    ZqGrid* m_grid;
    QString m_fields;
    bool m_codesAfterSave = false;
    QLabel* m_lblStatus;
    QHash<QString, RoomPlace> m_places;
};

} // namespace zq
