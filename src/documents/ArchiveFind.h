#pragma once

#include <functional>
#include <QString>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListWidget;

namespace zq {

// The search box of the archive's screens: words typed in `txtFind` find documents by name and by
// the words of their texts; `lstFound` lists them with the line that holds the words, and a click
// hands the document's code to the screen.
class ArchiveFind : public QWidget {
    Q_OBJECT

public:
    ArchiveFind(QWidget* parent, std::function<QString()> classCode,
                std::function<void(const QString&)> chosen);
    // Runs the search for the words in the box.
    void find();

private:
    std::function<QString()> m_classCode;
    std::function<void(const QString&)> m_chosen;
    QLineEdit* m_txtFind;
    QLabel* m_lblFound;
    QListWidget* m_lstFound;
};

} // namespace zq
