#pragma once

#include "shell/DbError.h"
#include "shell/Recordset.h"

#include <functional>
#include <QColor>
#include <QDialog>
#include <QString>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace zq {

class ZqGrid;

// "部门与组织架构": the departments and posts of the code table, as a tree with head counts and
// quotas or as a list. Rows are added, changed and deleted here, and each row keeps two description
// pages. The row chosen last is left in CurPersonCode and CurPersonName for the caller.
class frmRs_Dept : public QDialog {
    Q_OBJECT
    Q_PROPERTY(QString myTable READ myTable WRITE setMyTable)

public:
    // The screen's states; what is enabled follows them.
    enum class State { Browse, Add, Change, Describe };

    explicit frmRs_Dept(QWidget* parent = nullptr);

    QString myTable() const { return m_table; }
    void setMyTable(const QString& table) { m_table = table.toLower(); }
    QString myModel() const { return m_model; }
    QString myFields() const { return m_fields; }
    int myMode() const { return m_mode; }
    int myNodeHit() const { return m_nodeHit; }
    State state() const { return m_state; }

    // The colour dialog behind cmdColor: given the present colour, gives the chosen one or an
    // invalid colour when cancelled. Tests replace it; an empty function restores the dialog.
    using ColorPicker = std::function<QColor(const QColor&)>;
    static void setColorPicker(ColorPicker picker);

    void load();
    void RefreshTree();
    void Tree1_NodeClick(QTreeWidgetItem* node);
    void Tree1_DblClick(QTreeWidgetItem* node);
    void chkList_Click();
    void CmdlistOption_Click();
    void cmdAdd_Click();
    void cmdChg_Click();
    void cmdDel_Click();
    void cmdSave_Click();
    void cmdCancel_Click();
    void Check1_Click();
    void cmdColor_Click();
    void cmdDetail_Click();
    void cmdPosOk_Click();
    void cmdPosCancel_Click();
    void cmdPrint_Click();
    void cmdQuit_Click();

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void reject() override;

private:
    void buildControls();
    QFrame* buildEditPanel();
    QWidget* buildPages();
    void fillDeptCombo();
    void fillList();
    void setState(State state);
    void showDetailPage();
    bool descriptionsChanged() const;
    void loadDescriptions(const QString& code);
    bool leaveChangedDescriptions(QTreeWidgetItem* previous);
    qint32 numberColor() const;
    void setNumberColor(const QColor& color);
    // Runs a handler; a database error is told and ends any filling.
    template <typename F> void guarded(F&& f) {
        try {
            f();
        } catch (const DbError& e) {
            failed(e);
        }
    }
    void failed(const DbError& e);
    static QColor defaultColor();
    // A stripe of colour and text that says what the screen is doing.
    static void paintBanner(QLabel* banner, const QString& text, const QColor& color);

    bool m_loaded = false;
    bool m_filling = false;
    QString m_table;
    QString m_word = QStringLiteral("部门");
    QString m_model;
    QString m_fields;
    int m_mode = 0;
    int m_nodeHit = 0;
    State m_state = State::Browse;
    bool m_tag1 = false;
    bool m_tag2 = false;
    // What the pages and the row in hand held when read, so that a save can tell whether another
    // client changed them meanwhile.
    QString m_loadedDetail1;
    QString m_loadedDetail2;
    RowSnapshot m_loadedRow;

    QWidget* m_fraLeft;
    QComboBox* m_cboDept;
    QCheckBox* m_chkNoListCode;
    QCheckBox* m_chkTotalMan;
    QTreeWidget* m_tree;
    QLabel* m_lblOverQuota;
    QPushButton* m_cmdAdd;
    QPushButton* m_cmdChg;
    QPushButton* m_cmdDel;
    QPushButton* m_cmdPrint;
    QPushButton* m_cmdDetail;
    QPushButton* m_cmdListOption;
    QPushButton* m_cmdQuit;
    QCheckBox* m_chkList;
    QCheckBox* m_chkBmList;
    QStackedWidget* m_right;
    ZqGrid* m_grid;
    QLabel* m_lblPages;
    QButtonGroup* m_optDetail;
    QStackedWidget* m_pages;
    QPlainTextEdit* m_text1;
    QPlainTextEdit* m_text2;
    QPushButton* m_cmdPosOk;
    QPushButton* m_cmdPosCancel;

    QFrame* m_picture1;
    QLabel* m_lblMode;
    QLabel* m_lblCode;
    QLabel* m_lblName;
    QLabel* m_lblNumber;
    QLabel* m_lblRsType;
    QLabel* m_lblGzType;
    QLineEdit* m_txtCode;
    QLineEdit* m_txtName;
    QLineEdit* m_txtNumber;
    QCheckBox* m_check1;
    QComboBox* m_cboRsType;
    QComboBox* m_cboGzType;
    QPushButton* m_cmdColor;
    QPushButton* m_cmdSave;
    QPushButton* m_cmdCancel;
};

} // namespace zq
