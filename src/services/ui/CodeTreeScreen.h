#pragma once

#include "services/CodeTreeData.h"
#include "services/ui/ScreenDialog.h"
#include "shell/Recordset.h"

#include <functional>
#include <QDialog>
#include <QIcon>
#include <QString>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFrame;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QSplitter;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;

namespace zq {

// The screens of a code tree with a page of text beside it: the tree of classes and entries on the
// left, the entry panel that adds and changes a row, and the contents page, optionally with the
// entry's file and picture. The archive, the company dictionary, the archive by department and the
// rooms are such screens; each states only where it differs.
class CodeTreeScreen : public ScreenDialog {
    Q_OBJECT
    Q_PROPERTY(QString myTable READ myTable WRITE setMyTable)
    Q_PROPERTY(int State READ screenState WRITE setScreenState)

public:
    enum class Mode { Browse, New, Change, Contents };

    QString myTable() const { return m_table; }
    void setMyTable(const QString& table) { m_table = table.toLower(); }
    int screenState() const { return m_screenState; }
    void setScreenState(int state) { m_screenState = state; }
    Mode mode() const { return m_mode; }
    // The entry in hand.
    QString currentCode() const { return m_curCode; }
    QString currentName() const { return m_curName; }

    void RefreshTree();
    void Tree1_NodeClick(QTreeWidgetItem* node);
    void cmdAdd_Click();
    void cmdChg_Click();
    virtual void cmdDel_Click();
    void cmdSave_Click();
    void cmdCancel_Click();
    void cmdDetail_Click();
    void cmdPosOk_Click();
    void cmdPosCancel_Click();
    virtual void cmdPrint_Click();
    void cmdDocOpen_Click();
    void cmdDocCopy_Click();
    void cmdTextPrint_Click();
    // Shows the contents with their picture (0) or alone (1).
    void optDetail_Click(int index);

protected:
    // What a screen of the family has.
    struct Features {
        bool editing = true; // entry panel, add, change, delete and contents
        bool files = false;  // file path, picture, open and copy
        bool lockTreeWhileEditing = false;
        bool totals = true;           // the box that counts on the nodes
        bool filer = false;           // the class combo above the tree
        int copyLines = 1000;         // lines a document's text brings into the contents
        bool nameChecksFirst = false; // a save checks the name is free before the code
    };
    CodeTreeScreen(QWidget* parent, const char* objectName, const QString& caption, const Features& features);

    // What differs from screen to screen.
    // The tree as the boxes say; by default the rows of the table under treePrefix().
    virtual void buildTree();
    virtual QString treePrefix() const { return {}; }
    // The picture of an entry (a leaf that is no class) in the tree.
    virtual QIcon entryIcon() const;
    // A click on a node other than the root; by default the row of the node's code is shown.
    virtual void nodeChosen(QTreeWidgetItem* node);
    // The box that hides the codes was clicked.
    virtual void chkNoListCode_Click() { RefreshTree(); }
    // A click on the root, the company; by default what is on show stays.
    virtual void rootChosen() {}
    // Fills the page from a row read by its code (empty when there is none).
    virtual void showRecord(const RowSnapshot& row);
    virtual void clearPage();
    // The columns a save writes besides fcode and fName.
    virtual QVector<FieldValue> entryValues() const { return {}; }
    // Runs inside the transaction of a save, delete or contents store.
    virtual void alongsideSave(const QString& code) { (void)code; }
    virtual void alongsideDelete(const QString& code) { (void)code; }
    virtual void alongsideContents(const QString& code) { (void)code; }
    // After a save; the class list of a screen with one follows.
    virtual void afterSave() {}
    virtual void afterDelete(bool wasClass) { (void)wasClass; }
    // The messages of the save checks and of a stored contents page.
    virtual QString emptyMessage(bool code) const;
    virtual QString existsMessage(bool code) const;
    virtual QString storedMessage() const;
    // Whether the entry in hand is a class (a branch) rather than an entry.
    virtual bool isClass() const;
    // The entry kind's captions follow the class/entry choice.
    virtual void kindChanged() {}
    // Where the selected entry is kept for the caller.
    virtual void publishCurrent();
    // A double click on a node; by default it changes the entry when changing is allowed.
    virtual void nodeDoubleClicked();

    void setMode(Mode mode);
    void setCurrent(const QString& code, const QString& name);
    // Selects the node of a key and shows its entry, as a click on it would.
    void selectNode(const QString& key);
    void readRecord(const QString& code);
    bool contentsChanged() const { return m_tag; }
    void setContents(const QString& stored);
    // Loads a picture into imgPath: false when the file is missing or no picture.
    bool showPicture(const QString& path);
    void clearPicture();
    // Shows a document's picture with the text; a missing file, or one that is no picture, is told
    // and the text is shown alone. True when the picture is on show.
    bool showPictureOrTell(const QString& path);
    void setFilePath(const QString& path);
    // Code and name of a node: from its key, the name after the code's tab or first.
    static void nodeCodeAndName(const QTreeWidgetItem* node, QString& code, QString& name);
    void afterFailure() override { m_filling = false; }

    QString m_table;
    QString m_word;          // the kind of row in messages and log lines
    QString m_newCaption;    // the entry panel's heading when adding ("档案新建:")
    QString m_changeCaption; // and when changing
    QString m_classWord;     // a class and an entry in the delete question
    QString m_entryWord;
    QString m_lowerLevels; // refusal of a class that still holds entries
    int m_screenState = 0;
    int m_editMode = 0; // 0 browse, 1 new, 2 change
    bool m_filling = false;
    Features m_features;
    RowSnapshot m_loadedRow;
    QString m_savedText; // the contents as stored
    bool m_tag = false;  // contents edited and not stored

    QHBoxLayout* m_topRow;
    QPushButton* m_cmdAdd;
    QPushButton* m_cmdChg;
    QPushButton* m_cmdDel;
    QPushButton* m_cmdDetail;
    QPushButton* m_cmdPrint;
    QPushButton* m_cmdQuit;

    QFrame* m_fraLeft;
    QLabel* m_lblTitle;
    QComboBox* m_cboFiler = nullptr;
    QCheckBox* m_chkNoListCode;
    QCheckBox* m_chkTotalMan;
    QTreeWidget* m_tree;

    QFrame* m_picture1;
    QLabel* m_lblAction;
    QButtonGroup* m_optType;
    QLabel* m_lblCode;
    QLabel* m_lblName;
    QLineEdit* m_txtCode;
    QLineEdit* m_txtName;
    QGridLayout* m_entryGrid; // rows 0 and 1 hold code and name; screens add theirs below
    QPushButton* m_cmdSave;
    QPushButton* m_cmdCancel;

    QFrame* m_fraRight;
    QVBoxLayout* m_rightBox; // the page's rows: screens add theirs
    QButtonGroup* m_optDetail;
    QSplitter* m_split;
    QPlainTextEdit* m_text1;
    QLabel* m_imgPath = nullptr;
    QLabel* m_lblFileMemo = nullptr;
    QLineEdit* m_txtPath2 = nullptr;
    QToolButton* m_cmdDocOpen = nullptr;
    QToolButton* m_cmdDocCopy = nullptr;
    QPushButton* m_cmdTextPrint;
    QPushButton* m_cmdPosOk;
    QPushButton* m_cmdPosCancel;

protected:
    void reject() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildControls();
    bool askToStore();
    void fitPicture();

    Mode m_mode = Mode::Browse;
    QString m_curCode;
    QString m_curName;
    QString m_picturePath;
};

} // namespace zq
