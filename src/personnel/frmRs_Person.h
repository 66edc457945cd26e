#pragma once

#include <functional>
#include <QDialog>
#include <QPointer>
#include <QString>
#include <QVariant>

class QAction;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QMenu;
class QPushButton;
class QRadioButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace zq {

class ZqGrid;

// "人事档案": the staff register by state and department, from which a person is added, changed,
// deleted, moved out of service or brought back, and the person's record screens are opened.
class frmRs_Person : public QDialog {
    Q_OBJECT
    Q_PROPERTY(int RsState READ rsState WRITE setRsState)
    // Opened from the home page: the persons of one of its lines, named by its caption beside the
    // count (the window's title stays "人事档案"). A search replaces it.
    Q_PROPERTY(QString PresetFilter MEMBER m_presetFilter)
    Q_PROPERTY(QString PresetCaption MEMBER m_presetCaption)

public:
    explicit frmRs_Person(QWidget* parent = nullptr);
    ~frmRs_Person() override;

    int rsState() const { return m_rsState; }
    void setRsState(int state);
    QString gridFieldList() const { return m_gridFieldList; }
    QString seekCondition() const { return m_seekCondition; }
    QString detailCondition() const { return m_detailCondition; }
    QString treeDeptCode() const { return m_treeDeptCode; }
    QString treeDeptName() const { return m_treeDeptName; }
    // The condition of the list on show (alias "a.").
    QString listCondition() const;

    // The record screens in the order of the choices, and their captions.
    static const QStringList& recordScreens();
    static const QStringList& recordCaptions();

    void load();
    void cboZT_Click();
    void chkTotalMan_Click();
    void Tree1_NodeClick(QTreeWidgetItem* node);
    void Tree1_DblClick();
    void RefreshPersonList();
    void Grid1_LeaveCell(int col, int row, int newCol, int newRow);
    void Grid1_DblClick(int col, int row);
    void OpenRecordScreen();
    // A double click on a record choice opens it as the buttons would: to change for a clerk who
    // may change persons (修改), to look at for the others (查询).
    void OptSelect_DblClick(int index);
    void ComAdd_Click();
    void cmdChg_Click();
    void cmdImport_Click();
    void cmdOpen_Click();
    void ComDel_Click();
    void cmdState_Click();
    void cmdLZOK_Click();
    void cmdLZexit_Click();
    void cmdCompile_Click();
    void cmdHistory_Click();
    void cmdDept_Click();
    void CmdlistOption_Click();
    void mnuRsSeek1_Click();
    void mnuRsSeek2_Click();
    void mnuPntDoc_Click();
    void mnuPntDocList_Click();
    void mnuPntCard_Click();
    void mnuPntOther_Click();
    void mnuPntList_Click();
    void mnuPntDept_Click();
    void cmdQuit_Click();
    void RemovePersonRow();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void reject() override;
    void childEvent(QChildEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void reopen();
    void buildControls();
    QWidget* buildChoices();
    QFrame* buildLeavingPanel();
    void fillTree();
    // The head counts of the tree from the database again, after a change of persons.
    void refreshCounts();
    // A search of the clerk's own replaces the home page's choice.
    void dropPreset();
    void leave();
    void reinstate();
    void setPersonFromRow(int row);
    int chosenRecordScreen() const;
    bool refusedRight(qint16 op, const QString& refusal);
    bool needPerson(const QString& message, int style);
    // Opens a screen by name and gives the value its property `resultProperty` held when it closed.
    QVariant openFormFor(const QString& name, const QVariantMap& settings, const char* resultProperty);
    // Runs a handler; a failed statement is shown instead of leaving the event loop.
    void guarded(const std::function<void()>& f);

    bool m_loaded = false;
    int m_rsState = 1;
    QString m_gridFieldList;
    QString m_seekCondition;
    QString m_detailCondition;
    QString m_presetFilter;
    QString m_presetCaption;
    QString m_treeDeptCode;
    QString m_treeDeptName;
    bool m_filling = false;

    QComboBox* m_cboZT;
    QCheckBox* m_chkTotalMan;
    QTreeWidget* m_tree;
    ZqGrid* m_grid;
    QLabel* m_lblTotal;
    QLabel* m_lblPreset;
    QPushButton* m_cmdState;
    QPushButton* m_cmdQuit;
    QPushButton* m_cmdSeek;
    QPushButton* m_cmdPrint;
    QMenu* m_mnuRsSeek;
    QMenu* m_mnuPnt;
    QAction* m_mnuPntDept;
    QButtonGroup* m_optSelect;
    QList<QWidget*> m_images;
    QFrame* m_pictLZ;
    QLabel* m_lblLeaving;
    QButtonGroup* m_optLeft;

    // The screen opened by name that a result is awaited from, and the result.
    bool m_awaiting = false;
    QPointer<QObject> m_awaited;
    const char* m_resultProperty = nullptr;
    QVariant m_result;
};

} // namespace zq
