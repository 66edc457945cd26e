#pragma once

#include "PersonBasicData.h"

#include <QDialog>
#include <QString>

class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QStatusBar;

namespace zq {

// "基本资料": one person's master row, viewed (PersonEditMode 0), added (1) or changed (2), with
// the photo. Adding stays open for the next person and says in its status line whom it saved; a
// change closes after the save. The fields that must be filled carry a mark; the department stands
// before the post, whose list it fills.
class frmRs_PersonBasic : public QDialog {
    Q_OBJECT
    // The unit a new person gets by default (the browser passes its company).
    Q_PROPERTY(QString CompName READ compName WRITE setCompName)

public:
    explicit frmRs_PersonBasic(QWidget* parent = nullptr);
    ~frmRs_PersonBasic() override;

    QString compName() const;
    void setCompName(const QString& name);

    void load();
    void LoadRecord();
    // Handlers, public so that tests drive them as the clerk would.
    void ComBm_Click();
    void CobFunit_Click();
    void cboRz_Click();
    void cmdOK_Click();
    void Label2_DblClick(int index);
    void Label2_RightClick(int index);
    void mnuPicEdit_Click();
    void mnuPicDel_Click();
    void Text2_GotFocus(int index);
    bool Text2_LostFocus(int index);

    QLineEdit* text2(int index) const { return m_text2[index]; }
    QString photoPath() const { return m_photoPath; }
    // The status line's message, after a person was added.
    QString statusText() const;
    bool hasPicture() const;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildUi();
    QComboBox* comboOf(int index) const;
    QWidget* fieldWidget(int index) const;
    PersonBasicRow row() const;
    bool validate();
    bool refuse(const QString& message, QWidget* focus);
    void afterSave(int mode);
    void OpenTransferOrder(bool unitChange);
    void showPicture(const QString& file);
    void selectText(QComboBox* combo, const QString& text);
    void lockControls();

    bool m_loaded = false;
    bool m_askTransfer = true;
    int m_mode = 0;
    PersonBasicRow m_loadedRow; // the record as read, for a save that keeps others' changes
    QString m_loadedDeptName;
    QString m_loadedUnit;
    QString m_photoPath;
    bool m_photoRemoved = false; // the clerk took the picture away (相片删除)
    QByteArray m_loadedPhoto;    // digest of the photo as read: another client's is not overwritten
    QString m_oldPost;           // cboRz.Tag
    QString m_houseTag = QStringLiteral("1");

    QLineEdit* m_text2[kBasicFields] = {};
    QLabel* m_label2[kBasicFields] = {};
    QComboBox* m_comSex;
    QComboBox* m_comhy;
    QComboBox* m_comxz;
    QComboBox* m_cboRz;
    QComboBox* m_comzf;
    QComboBox* m_comGz;
    QComboBox* m_comBm;
    QComboBox* m_cobFunit;
    QComboBox* m_combo1;
    QLabel* m_labbm;
    QLabel* m_image1;
    QMenu* m_mnuPic;
    QPushButton* m_cmdOK;
    QPushButton* m_cmdCancel;
    QStatusBar* m_status;
};

} // namespace zq
