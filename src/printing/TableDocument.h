#pragma once

#include "PrintDocument.h"

#include <memory>
#include <QStringList>
#include <QVector>
#include <utility>

namespace zq {

// A list to print, taken from whatever shows it (a grid, a tree) or made by a program.
struct TableColumn {
    QString caption;
    double width = 10; // in average characters, as grids size their columns
    Qt::Alignment align = Qt::AlignLeft;
};

struct TableRow {
    QStringList cells;
    int level = 0; // depth in an outline
};

struct TableData {
    QVector<TableColumn> columns;
    QVector<TableRow> rows;
};

// What stands above the list on its first page.
struct ListHeading {
    QString title;
    // Name and value in turn. The company's entries among them (G().CompanyItems) give the letterhead;
    // the others are shown under the title, those without a value left out.
    QStringList items;
    // A free line of text under the items.
    QString text;
    // False for a table without the list heading: the title stays, the items and the text go.
    bool showItems = true;
};

// A paged list: the heading on the first page and a short running head on the others, the column
// captions repeated on every page, page numbers at the foot. A ruled table turns the paper when its
// columns need the width; an outline (a tree) indents each level and has neither rules nor captions.
class TableDocument final : public PrintDocument {
public:
    enum class Style { Ruled, Outline };

    TableDocument(TableData data, ListHeading heading, Style style = Style::Ruled);
    ~TableDocument() override;

    QString title() const override { return m_heading.title; }
    QSizeF paperSize() const override;
    int pageCount() const override { return int(m_pageStarts.size()); }
    void paintPage(Canvas& canvas, int page) const override;

    // First row of a page and one past its last.
    std::pair<int, int> pageRows(int page) const;
    // Widths of the columns on paper, in millimetres.
    const QVector<double>& columnWidths() const { return m_widths; }
    double fontSize() const { return m_points; }

private:
    struct HeadLine {
        QString text;
        double points;
        bool bold;
        Qt::Alignment align;
        QColor color;
        double gapAfter;
    };

    void layOutColumns();
    void layOutHeading();
    void paginate();
    QStringList cellLines(int row, int col) const;
    double cellWidth(int row, int col) const;
    double drawHeading(Canvas& c, int page) const;
    double drawHeaderRow(Canvas& c, double y) const;
    void drawFooter(Canvas& c, int page) const;

    TableData m_data;
    ListHeading m_heading;
    Style m_style;
    bool m_landscape = false;
    double m_points = 9;
    QString m_family;
    QString m_company;
    QVector<HeadLine> m_headLines;
    double m_headHeight = 0;
    QVector<double> m_widths;
    QVector<double> m_rowHeights;
    double m_captionHeight = 0;
    QVector<int> m_pageStarts;
    std::unique_ptr<TextMeasure> m_body;
    std::unique_ptr<TextMeasure> m_bold;
};

} // namespace zq
