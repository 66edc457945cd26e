#pragma once

#include "PrintDocument.h"

#include <functional>
#include <QByteArray>
#include <QHash>
#include <QMarginsF>
#include <QStringList>
#include <QVector>

namespace zq {

class Recordset;

// One thing drawn on a card, in millimetres from the card's top left.
struct LayoutItem {
    enum class Kind { Box, Line, Text, Label, Field, Photo };
    Kind kind = Kind::Text;
    QRectF rect;
    QLineF line;
    QString field;               // Label, Field, Photo
    QString text;                // Text: with {name} variables; Label: the caption when the field has none
    QString suffix;              // after a label's caption
    QString format;              // Field: "date" shows a date as yyyy-mm-dd
    QHash<QString, QString> map; // Field: value to shown text ("1" -> "审核通过")
    double size = 0;             // points; 0: the layout's
    bool bold = false;
    bool wrap = false;
    Qt::Alignment align = Qt::AlignLeft;
    double pen = 0.25; // Box, Line, Photo frame: mm; 0 none
    QColor fill;
    QColor color = Qt::black;
};

// A stored layout (the JSON of the template store):
//   {"title": "...", "font": {"family": "宋体", "size": 9},
//    "page": {"width": 210, "height": 297, "margins": [left, top, right, bottom]},
//    "card": {"width": 90, "height": 64, "columns": 2, "rows": 4, "gap": [x, y]},
//    "items": [ {"kind": "box|line|text|label|field|photo", "rect": [x, y, w, h],
//                "from": [x, y], "to": [x, y], "field": "fName", "text": "{公司单位|CompName}",
//                "suffix": "：", "size": 9, "bold": false, "wrap": false, "align": "left|center|right",
//                "pen": 0.25, "fill": "#eef1f5", "color": "#000000", "format": "date", "map": {"1": "..."}}
//                ],
//    "pageItems": [ the same, drawn once a page ]}
// A page holds columns x rows cards, centred in the area inside the margins. Variables in a text,
// {name}, are looked up in the record, then the company's variables, then CompName, UserName,
// today, page and pages; "{a|b}" takes the first that is not empty.
struct CardLayout {
    QString title;
    QString family;
    double size = 9;
    QSizeF paper = {210, 297};
    QMarginsF margins = {12, 12, 12, 12};
    QSizeF card = {186, 273};
    int columns = 1;
    int rows = 1;
    QSizeF gap;
    QVector<LayoutItem> items;
    QVector<LayoutItem> pageItems;

    // Throws DbError naming the layout when the text is not a layout.
    static CardLayout fromJson(const QByteArray& json, const QString& name = {});
    int cardsPerPage() const { return qMax(1, columns * rows); }
    // Fields that hold pictures.
    QStringList photoFields() const;
};

// The layout the template store holds for a template and sheet key (zq_PrintTemplate); throws DbError
// when it holds none.
CardLayout loadLayout(const QString& templateKey, const QString& sheetKey);

// The records of a print job: every field as text, the photo fields as their bytes.
class RecordTable {
public:
    RecordTable() = default;
    // The fields of a recordset; `photoFields` among them are kept as bytes, the others as text.
    RecordTable(const Recordset& rs, const QStringList& photoFields);
    // Reads the rest of the recordset; false when `keepGoing`, told the rows read so far, says stop.
    bool read(Recordset& rs, const std::function<bool(int)>& keepGoing = {});

    int size() const { return int(m_rows.size()); }
    int field(const QString& name) const { return m_index.value(name.toLower(), -1); }
    QString text(int row, const QString& field) const;
    QByteArray bytes(int row, const QString& field) const;

private:
    QHash<QString, int> m_index;
    QVector<int> m_photoSlot; // by field: its place among the photos, -1 for text
    QVector<QVector<QString>> m_rows;
    QVector<QVector<QByteArray>> m_photos;
};

// Prints records through a layout: one record a card, as many cards a page as the layout holds.
class CardDocument final : public PrintDocument {
public:
    // `fields` is the field collection: caption and field name in turn.
    CardDocument(CardLayout layout, RecordTable records, const QStringList& fields);

    QString title() const override { return m_layout.title; }
    QSizeF paperSize() const override { return m_layout.paper; }
    int pageCount() const override;
    void paintPage(Canvas& canvas, int page) const override;

    const CardLayout& layout() const { return m_layout; }
    const RecordTable& records() const { return m_records; }
    // The text of a template's variables for a record (-1: none) on a page.
    QString expand(const QString& text, int record, int page) const;
    // A field's value as the card shows it.
    QString fieldText(const LayoutItem& item, int record) const;

private:
    void drawItem(Canvas& c, const LayoutItem& item, const QPointF& origin, int record, int page) const;

    CardLayout m_layout;
    RecordTable m_records;
    QHash<QString, QString> m_captions;
    QHash<QString, QString> m_variables;
};

} // namespace zq
