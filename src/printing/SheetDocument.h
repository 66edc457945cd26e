#pragma once

#include "PersonSheetData.h"
#include "PrintDocument.h"

#include <QImage>
#include <QRectF>
#include <QStringList>
#include <QVector>

namespace zq {

// The record sheet's grid in twips (1 mm = 56.7 twips), worked out from the base font at each drawing.
struct SheetGrid {
    double charWidth = 0;  // w: the probe character "繁" of the base font
    double textHeight = 0; // h
    double gap = 0;        // g: the spacing added to h for one row
    double c[9] = {};      // the column boundaries c0 to c8
    double top = 0;        // where the rows begin

    double row() const { return textHeight + gap; }
    // Works the grid out for a base font measured as w by h twips.
    static SheetGrid make(double w, double h);
};

// A value as the sheet placed it: the cell (mm from the paper's corner), the caption it stands
// under, and whether it fits there whole.
struct SheetCell {
    QString caption;
    QString text;
    QRectF mm;
    bool fits = true;
};

// Which sides DrawRS draws (the screen's PrintPage).
enum class SheetSides { Both = 0, Front = 1, Back = 2 };

// Draws one side (1 front, 2 back) of a person's sheet. Without `values` only frame and labels are
// drawn, as for the blank sheet on the printer.
// The values placed are handed to `cells` when given.
void DrawRS(Canvas& canvas, const PersonSheet& sheet, const QImage& photo, const SheetCaptions& captions,
            int side, bool values = true, QVector<SheetCell>* cells = nullptr);

// Writes one text into the cell between `left` and `right` (twips) on the row whose top is `top`;
// the cell is `textHeight` + `gap` high. `align`: -1 wrapped and shrunk until the lines fit, 0 left,
// 1 centred, 2 right, 3 spread over the cell. Only -1 changes the size: the others stay on one line,
// cut at the cell's right edge.
void PrintTextCell(Canvas& canvas, const QString& text, double& left, double& right, double top,
                   double textHeight, double gap, int align, double points = 9);

// Writes a value into its cell (twips) so that it shows whole: at `points` on one line when it
// fits; else smaller on one line, down to 7 points; else broken into lines at the largest size
// whose lines fit the cell's height, down to 6 points, numbers kept whole (down to 5 points) where
// some size allows it. False when not even that holds it: it is
// then drawn at 6 points and cut at the cell's foot, and the caller tells the user. A value that
// must keep its one line at its size (`oneLine`) is cut at the cell's edge instead.
bool FitTextCell(Canvas& canvas, const QString& text, double left, double right, double top, double height,
                 double points = 9, bool oneLine = false);

// The sheets of a list of persons, each printed on the sides asked for and as many times as asked.
// A person is read when its first page is drawn, so a batch of thousands is drawn as it goes with
// one person in memory. An empty list with `blank` is one blank sheet.
class SheetDocument final : public PrintDocument {
public:
    explicit SheetDocument(QStringList codes, SheetSides sides = SheetSides::Both, int copies = 1,
                           bool blank = false);

    QString title() const override { return QStringLiteral("个人简历"); }
    QSizeF paperSize() const override { return {210, 297}; }
    int pageCount() const override;
    void paintPage(Canvas& canvas, int page) const override;

    int persons() const { return int(m_codes.size()); }
    // The values of the page drawn last.
    const QVector<SheetCell>& cells() const { return m_cells; }
    // One line for each value that did not fit its cell on the pages drawn so far: whose, where and
    // why, for the user to hear before the paper is trusted.
    const QStringList& misfits() const { return m_misfits; }

private:
    const PersonSheet& person(int index) const;

    QStringList m_codes;
    SheetSides m_sides;
    int m_copies;
    bool m_blank;
    SheetCaptions m_captions;
    mutable int m_loaded = -1;
    mutable PersonSheet m_sheet;
    mutable QImage m_photo;
    mutable QVector<SheetCell> m_cells;
    mutable QStringList m_misfits;
};

} // namespace zq
