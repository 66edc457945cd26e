#pragma once

#include "shell/Recordset.h"

#include <QDate>
#include <QDialog>
#include <QString>
#include <QVariantMap>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zq {

struct MoveOrder;

// "调令新增" / "调令修改": checks one transfer order and carries it out: the order row, and the
// history row when the person changes department. The master record is left as it is.
//
// The caller fills the dialog through its properties before showing it. The boxes Text1(0) to
// Text1(10) are also accepted under those very names (and the mode as "cmdOk.Tag") as dynamic
// properties.
class frmRs_PersonAssignOk : public QDialog {
    Q_OBJECT
    // 1 add, 2 change.
    Q_PROPERTY(int cmdOkTag READ mode WRITE setMode)
    Q_PROPERTY(QString Caption READ windowTitle WRITE setWindowTitle)
    Q_PROPERTY(QString Text1_0 READ moveNmb WRITE setMoveNmb)
    Q_PROPERTY(QString Text1_1 READ personName WRITE setPersonName)
    Q_PROPERTY(QString Text1_2 READ personCode WRITE setPersonCode)
    Q_PROPERTY(QString Text1_5 READ oldPost WRITE setOldPost)
    Q_PROPERTY(QString Text1_8 READ newPost WRITE setNewPost)
    Q_PROPERTY(QString Text1_9 READ chargePerson WRITE setChargePerson)
    Q_PROPERTY(QString Text1_10 READ writtenBy WRITE setWrittenBy)
    Q_PROPERTY(QString cboOldUnit READ oldUnit WRITE setOldUnit)
    Q_PROPERTY(QString cboOldDept READ oldDept WRITE setOldDept)
    Q_PROPERTY(QString cboNewUnit READ newUnit WRITE setNewUnit)
    Q_PROPERTY(QString cboNewDept READ newDept WRITE setNewDept)
    Q_PROPERTY(QDate DTPStart READ date WRITE setDate)
    // The order as the list read it, by lower-cased field name: a change saves only while it is so.
    Q_PROPERTY(QVariantMap Loaded READ loaded WRITE setLoaded)

public:
    explicit frmRs_PersonAssignOk(QWidget* parent = nullptr);

    int mode() const { return m_mode; }
    void setMode(int mode) { m_mode = mode; }
    // The text of box Text1(index), or of the combo at that place (3, 4, 6, 7).
    QString place(int index) const;
    void setPlace(int index, const QString& text);
    QString moveNmb() const { return place(0); }
    void setMoveNmb(const QString& v) { setPlace(0, v); }
    QString personName() const { return place(1); }
    void setPersonName(const QString& v) { setPlace(1, v); }
    QString personCode() const { return place(2); }
    void setPersonCode(const QString& v) { setPlace(2, v); }
    QString oldPost() const { return place(5); }
    void setOldPost(const QString& v) { setPlace(5, v); }
    QString newPost() const { return place(8); }
    void setNewPost(const QString& v) { setPlace(8, v); }
    QString chargePerson() const { return place(9); }
    void setChargePerson(const QString& v) { setPlace(9, v); }
    QString writtenBy() const { return place(10); }
    void setWrittenBy(const QString& v) { setPlace(10, v); }
    QString oldUnit() const { return place(3); }
    void setOldUnit(const QString& v) { setPlace(3, v); }
    QString oldDept() const { return place(4); }
    void setOldDept(const QString& v) { setPlace(4, v); }
    QString newUnit() const { return place(6); }
    void setNewUnit(const QString& v) { setPlace(6, v); }
    QString newDept() const { return place(7); }
    void setNewDept(const QString& v) { setPlace(7, v); }
    QDate date() const;
    void setDate(const QDate& d);
    QVariantMap loaded() const;
    void setLoaded(const QVariantMap& row);

    void load();
    // A Text1 box takes the focus: in add mode the number is proposed afresh.
    void Text1_GotFocus(int index);
    // Leaving the name or the code box fills the old place from the master record.
    void Text1_LostFocus(int index);
    void cboOldUnit_LostFocus();
    void cmdStaff_Click();
    void cmdOk_Click();
    void cmdExit_Click();

protected:
    void showEvent(QShowEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QLineEdit* box(int index) const;
    QComboBox* comboOf(int index) const;
    int boxIndex(const QObject* o) const;
    MoveOrder order() const;
    bool confirmed();
    void refuse(const QString& message, QWidget* focus, bool select = false);

    bool m_loaded = false;
    bool m_dateAssigned = false;
    int m_mode = 1;
    RowSnapshot m_loadedOrder;
    QLineEdit* m_text1[11] = {};
    QLabel* m_label2[11] = {};
    QComboBox* m_cboOldUnit;
    QComboBox* m_cboOldDept;
    QComboBox* m_cboNewUnit;
    QComboBox* m_cboNewDept;
    QDateEdit* m_dtpStart;
    QPushButton* m_cmdOk;
    QPushButton* m_cmdExit;
    QPushButton* m_cmdStaff;
};

} // namespace zq
