#pragma once

#include "PersonSheetData.h"
#include "PrintDocument.h"

#include <QImage>
#include <QStringList>

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

// Which sides DrawRS draws (the screen's PrintPage).
enum class SheetSides { Both = 0, Front = 1, Back = 2 };

// Draws one side (1 front, 2 back) of a person's sheet. Without `values` only frame and labels are
// drawn, as for the blank sheet on the printer.
void DrawRS(Canvas& canvas, const PersonSheet& sheet, const QImage& photo, const SheetCaptions& captions,
            int side, bool values = true);

// Writes one text into the cell between `left` and `right` (twips) on the row whose top is `top`;
// the cell is `textHeight` + `gap` high. `align`: -1 wrapped and shrunk until the lines fit, 0 left,
// 1 centred, 2 right, 3 spread over the cell. Only -1 changes the size: the others stay on one line,
// cut at the cell's right edge.
void PrintTextCell(Canvas& canvas, const QString& text, double& left, double& right, double top,
                   double textHeight, double gap, int align, double points = 9);

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
};

} // namespace zq
