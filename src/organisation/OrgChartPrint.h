#pragma once

#include "OrgChart.h"
#include "printing/PrintDocument.h"

namespace zq {

// The chart on paper: scaled to one page, or tiled over several pages at a larger scale, each tile
// with corner marks and its place ("第 r 行 第 c 列") for putting the sheets together.
class OrgChartDocument : public PrintDocument {
public:
    // pagesAcross 0 or 1: one page; n: the chart's width spread over n pages.
    OrgChartDocument(const OrgChart& chart, const QString& title, int pagesAcross = 0);
    QString title() const override { return m_title; }
    QSizeF paperSize() const override { return m_paper; }
    int pageCount() const override { return m_rows * m_cols; }
    void paintPage(Canvas& canvas, int page) const override;
    int rows() const { return m_rows; }
    int columns() const { return m_cols; }

private:
    const OrgChart& m_chart;
    QString m_title;
    QSizeF m_paper;
    int m_rows = 1;
    int m_cols = 1;
    double m_scale = 1; // mm per chart unit
    QSizeF m_tile;      // chart units a page holds
};

// Saves the chart as the file's suffix says: .pdf (vector, its text searchable), .png or .svg.
// False with `error` set when it cannot.
bool SaveOrgChart(const OrgChart& chart, const QString& title, const QString& path, QString* error = nullptr);

} // namespace zq
