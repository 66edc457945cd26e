#pragma once

#include "personnel/PersonImport.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace zq {

// The staff import's screen: the columns of the file with the field each fills (the clerk corrects
// them), the columns left out, then the check's counts and every refused or doubtful row, which can
// be saved as a spreadsheet. Import writes once the check has run on the mapping as it stands.
class PersonImportDialog : public QDialog {
    Q_OBJECT
public:
    PersonImportDialog(const QString& path, bool mayAdd, bool mayUpdate, QWidget* parent = nullptr);
    const ImportCheck& lastCheck() const { return m_check; }
    bool written() const { return m_written; }

private:
    void fillMapping();
    void mappingChanged();
    void runCheck();
    void exportIssues();
    void runImport();

    ImportPlan m_plan;
    ImportCheck m_check;
    bool m_checked = false;
    bool m_written = false;
    bool m_mayAdd = true;
    QTableWidget* m_map = nullptr;
    QLabel* m_unmapped = nullptr;
    QCheckBox* m_update = nullptr;
    QCheckBox* m_goodOnly = nullptr;
    QLabel* m_counts = nullptr;
    QTableWidget* m_issues = nullptr;
    QPushButton* m_cmdCheck = nullptr;
    QPushButton* m_cmdExport = nullptr;
    QPushButton* m_cmdImport = nullptr;
};

// 导入员工 of the browser: asks for the file, shows the dialog, writes. True when persons were
// written (the browser then reads its list again). `mayUpdate`: the user may change persons.
bool ImportPersons(QWidget* parent, bool mayUpdate);

} // namespace zq
