#pragma once

#include "HomePageData.h"

#include <QWidget>

class QGridLayout;
class QLabel;

namespace zq {

// The host's home page: the signed-in user's figures (HomePageData) as lines, each count a link
// that asks for the screen behind it. It reads the control's database when told to, opening and
// closing it as a call of the control does.
class HomePage : public QWidget {
    Q_OBJECT
public:
    explicit HomePage(QWidget* parent = nullptr);

    // Reads the figures again; a database that cannot be read leaves a line saying so.
    void reload(const QDate& today = QDate::currentDate());
    const HomeSummary& summary() const { return m_summary; }

signals:
    // A line's link was followed.
    void lineActivated(const zq::HomeLine& line);

private:
    void render(const QString& notice);

    HomeSummary m_summary;
    QLabel* m_heading;
    QLabel* m_notice;
    QWidget* m_body;
    QGridLayout* m_grid;
};

} // namespace zq
