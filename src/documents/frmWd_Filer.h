#pragma once

#include "services/ui/CodeTreeScreen.h"

class QCheckBox;
class QComboBox;
class QToolButton;

namespace zq {

class ArchiveFind;

// "文档管理": the archive's classes and documents. A document points at a file outside the database,
// holds a text and may be a picture shown beside it. A State between 1 and the number of classes
// pins the screen to that class.
class frmWd_Filer : public CodeTreeScreen {
    Q_OBJECT

public:
    explicit frmWd_Filer(QWidget* parent = nullptr);

    void cboFiler_Click();
    void chkImage_Click();
    void cmdPath_Click();
    void txtPath_LostFocus();

protected:
    void load() override;
    QString treePrefix() const override;
    void showRecord(const RowSnapshot& row) override;
    void clearPage() override;
    QVector<FieldValue> entryValues() const override;
    void alongsideSave(const QString& code) override;
    void alongsideDelete(const QString& code) override;
    void alongsideContents(const QString& code) override;
    void afterSave() override;
    void afterDelete(bool wasClass) override;
    QString emptyMessage(bool code) const override;
    QString existsMessage(bool code) const override;
    QString storedMessage() const override;
    void kindChanged() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fillFiler();
    void setDocCopy();

    QComboBox* m_cboDept;
    QCheckBox* m_chkImage;
    QLabel* m_lblDept;
    QLabel* m_lblPath;
    QLineEdit* m_txtPath;
    QToolButton* m_cmdPath;
    ArchiveFind* m_find;
};

} // namespace zq
