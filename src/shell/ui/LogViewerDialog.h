#pragma once

#include "shell/Connection.h"
#include "shell/Users.h"

#include <QDialog>
#include <QHash>
#include <QVector>

class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QTableWidget;

namespace zq {

// The supervisor's view of the operation log: a date range, a user and a piece of text narrow the
// lines; the newest come first; what is shown can be saved as a CSV file.
// Controls: dtpFrom, dtpTo, cboUser, txtText, cmdSeek, grdLog, lblCount, cmdExport, cmdClose.
class LogViewerDialog : public QDialog {
public:
    explicit LogViewerDialog(Connection& db, QWidget* parent = nullptr);

    // Runs the filter of the controls and shows the lines.
    void seek();
    // Asks for a file and writes the lines shown to it; false when nothing was written.
    // To .xlsx or .csv, as the file name chosen says.
    bool exportLog();
    const QVector<LogEntry>& shown() const { return m_entries; }

private:
    QString moduleCaption(const QString& key) const;

    Connection& m_db;
    QHash<QString, QString> m_captions; // module key (lower case) -> caption
    QVector<LogEntry> m_entries;

    QDateEdit* m_from;
    QDateEdit* m_to;
    QComboBox* m_user;
    QLineEdit* m_text;
    QTableWidget* m_grid;
    QLabel* m_count;
};

} // namespace zq
