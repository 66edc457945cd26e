#include "CardDocument.h"

#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QDate>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace zq {

namespace {

QRectF rectOf(const QJsonValue& v) {
    const QJsonArray a = v.toArray();
    return {a.at(0).toDouble(), a.at(1).toDouble(), a.at(2).toDouble(), a.at(3).toDouble()};
}

QPointF pointOf(const QJsonValue& v) {
    const QJsonArray a = v.toArray();
    return {a.at(0).toDouble(), a.at(1).toDouble()};
}

Qt::Alignment alignOf(const QString& name) {
    if (name == QLatin1String("center")) return Qt::AlignHCenter;
    if (name == QLatin1String("right")) return Qt::AlignRight;
    return Qt::AlignLeft;
}

LayoutItem itemOf(const QJsonObject& o) {
    static const QHash<QString, LayoutItem::Kind> kinds = {
        {"box", LayoutItem::Kind::Box},     {"line", LayoutItem::Kind::Line},
        {"text", LayoutItem::Kind::Text},   {"label", LayoutItem::Kind::Label},
        {"field", LayoutItem::Kind::Field}, {"photo", LayoutItem::Kind::Photo}};
    LayoutItem item;
    item.kind = kinds.value(o.value(QLatin1String("kind")).toString(), LayoutItem::Kind::Text);
    item.rect = rectOf(o.value(QLatin1String("rect")));
    item.line = QLineF(pointOf(o.value(QLatin1String("from"))), pointOf(o.value(QLatin1String("to"))));
    item.field = o.value(QLatin1String("field")).toString();
    item.text = o.value(QLatin1String("text")).toString();
    item.suffix = o.value(QLatin1String("suffix")).toString();
    item.format = o.value(QLatin1String("format")).toString();
    const QJsonObject map = o.value(QLatin1String("map")).toObject();
    for (auto it = map.begin(); it != map.end(); ++it)
        item.map.insert(it.key(), it.value().toString());
    item.size = o.value(QLatin1String("size")).toDouble();
    item.bold = o.value(QLatin1String("bold")).toBool();
    item.wrap = o.value(QLatin1String("wrap")).toBool();
    item.align = alignOf(o.value(QLatin1String("align")).toString());
    item.pen = o.value(QLatin1String("pen")).toDouble(item.pen);
    if (o.contains(QLatin1String("fill"))) item.fill = QColor(o.value(QLatin1String("fill")).toString());
    if (o.contains(QLatin1String("color"))) item.color = QColor(o.value(QLatin1String("color")).toString());
    return item;
}

QVector<LayoutItem> itemsOf(const QJsonValue& v) {
    QVector<LayoutItem> items;
    for (const QJsonValue& i : v.toArray())
        items << itemOf(i.toObject());
    return items;
}

// Dates are kept as yyyy-mm-dd; older rows may hold mm/dd/yyyy or a time after the date.
QString displayDate(const QString& value) {
    const QString v = value.trimmed();
    const QDate us = QDate::fromString(v, QStringLiteral("M/d/yyyy"));
    if (us.isValid()) return us.toString(Qt::ISODate);
    if (v.size() > 10 && QDate::fromString(v.left(10), Qt::ISODate).isValid()) return v.left(10);
    return v;
}

} // namespace

// ---- CardLayout -------------------------------------------------------------------------------

CardLayout CardLayout::fromJson(const QByteArray& json, const QString& name) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject())
        throw DbError(QStringLiteral("打印模板 %1 格式错误: %2").arg(name, error.errorString()));
    const QJsonObject root = doc.object();
    CardLayout l;
    l.title = root.value(QLatin1String("title")).toString(name);
    const QJsonObject font = root.value(QLatin1String("font")).toObject();
    l.family = printFamily(font.value(QLatin1String("family")).toString());
    l.size = font.value(QLatin1String("size")).toDouble(9);
    const QJsonObject page = root.value(QLatin1String("page")).toObject();
    l.paper = {page.value(QLatin1String("width")).toDouble(210),
               page.value(QLatin1String("height")).toDouble(297)};
    if (page.contains(QLatin1String("margins"))) {
        const QRectF m = rectOf(page.value(QLatin1String("margins")));
        l.margins = {m.x(), m.y(), m.width(), m.height()};
    }
    const QJsonObject card = root.value(QLatin1String("card")).toObject();
    l.card = {
        card.value(QLatin1String("width")).toDouble(l.paper.width() - l.margins.left() - l.margins.right()),
        card.value(QLatin1String("height"))
            .toDouble(l.paper.height() - l.margins.top() - l.margins.bottom())};
    l.columns = qMax(1, card.value(QLatin1String("columns")).toInt(1));
    l.rows = qMax(1, card.value(QLatin1String("rows")).toInt(1));
    l.gap =
        QSizeF(pointOf(card.value(QLatin1String("gap"))).x(), pointOf(card.value(QLatin1String("gap"))).y());
    l.items = itemsOf(root.value(QLatin1String("items")));
    l.pageItems = itemsOf(root.value(QLatin1String("pageItems")));
    return l;
}

CardLayout loadLayout(const QString& templateKey, const QString& sheetKey) {
    Recordset rs(conn(),
                 QStringLiteral("select fLayout from zq_PrintTemplate where fTemplate=%1 and fSheet=%2")
                     .arg(quoted(templateKey), quoted(sheetKey)));
    const QString name = templateKey + QLatin1Char('/') + sheetKey;
    if (rs.eof()) throw DbError(QStringLiteral("没有打印模板 %1").arg(name));
    return CardLayout::fromJson(rs.text(0).toUtf8(), name);
}

QStringList CardLayout::photoFields() const {
    QStringList fields;
    for (const LayoutItem& i : items)
        if (i.kind == LayoutItem::Kind::Photo && !fields.contains(i.field, Qt::CaseInsensitive))
            fields << i.field;
    return fields;
}

// ---- RecordTable ------------------------------------------------------------------------------

RecordTable::RecordTable(const Recordset& rs, const QStringList& photoFields) {
    int photos = 0;
    for (int i = 0; i < rs.fieldCount(); ++i) {
        const QString name = rs.fieldName(i).toLower();
        if (!m_index.contains(name)) m_index.insert(name, i);
        m_photoSlot << (photoFields.contains(name, Qt::CaseInsensitive) ? photos++ : -1);
    }
}

bool RecordTable::read(Recordset& rs, const std::function<bool(int)>& keepGoing) {
    const int fields = int(m_photoSlot.size());
    int photos = 0;
    for (int slot : m_photoSlot)
        photos += slot >= 0;
    for (; !rs.eof(); rs.moveNext()) {
        QVector<QString> texts(fields);
        QVector<QByteArray> bytes(photos);
        for (int i = 0; i < fields; ++i) {
            if (m_photoSlot.at(i) >= 0)
                bytes[m_photoSlot.at(i)] = rs.value(i).toByteArray();
            else
                texts[i] = rs.text(i);
        }
        m_rows << texts;
        m_photos << bytes;
        if (keepGoing && !keepGoing(int(m_rows.size()))) return false;
    }
    return true;
}

QString RecordTable::text(int row, const QString& field) const {
    const int i = this->field(field);
    if (row < 0 || row >= m_rows.size() || i < 0 || m_photoSlot.at(i) >= 0) return {};
    return m_rows.at(row).at(i);
}

QByteArray RecordTable::bytes(int row, const QString& field) const {
    const int i = this->field(field);
    if (row < 0 || row >= m_rows.size() || i < 0 || m_photoSlot.at(i) < 0) return {};
    return m_photos.at(row).at(m_photoSlot.at(i));
}

// ---- CardDocument -----------------------------------------------------------------------------

CardDocument::CardDocument(CardLayout layout, RecordTable records, const QStringList& fields)
    : m_layout(std::move(layout))
    , m_records(std::move(records))
    , m_variables(companyVariables()) {
    for (int i = 0; i + 1 < fields.size(); i += 2)
        m_captions.insert(fields.at(i + 1).toLower(), fields.at(i));
    m_variables.insert(QStringLiteral("CompName"), G().CompName);
    m_variables.insert(QStringLiteral("UserName"), G().UserName);
    m_variables.insert(QStringLiteral("today"), QDate::currentDate().toString(Qt::ISODate));
}

int CardDocument::pageCount() const {
    const int per = m_layout.cardsPerPage();
    return (m_records.size() + per - 1) / per;
}

QString CardDocument::expand(const QString& text, int record, int page) const {
    static const QRegularExpression variable(QStringLiteral("\\{([^{}]+)\\}"));
    QString out;
    qsizetype done = 0;
    for (auto it = variable.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += text.mid(done, m.capturedStart() - done);
        done = m.capturedEnd();
        for (const QString& name : m.captured(1).split(QLatin1Char('|'))) {
            QString value;
            if (m_records.field(name) >= 0)
                value = m_records.text(record, name);
            else if (name == QLatin1String("page"))
                value = QString::number(page + 1);
            else if (name == QLatin1String("pages"))
                value = QString::number(pageCount());
            else
                value = m_variables.value(name);
            if (!value.isEmpty()) {
                out += value;
                break;
            }
        }
    }
    return out + text.mid(done);
}

QString CardDocument::fieldText(const LayoutItem& item, int record) const {
    const QString value = m_records.text(record, item.field);
    if (!item.map.isEmpty()) return item.map.value(value.trimmed(), value);
    if (item.format == QLatin1String("date")) return displayDate(value);
    return value;
}

void CardDocument::drawItem(Canvas& c, const LayoutItem& item, const QPointF& origin, int record,
                            int page) const {
    const QRectF r = item.rect.translated(origin);
    const double size = item.size > 0 ? item.size : m_layout.size;
    switch (item.kind) {
    case LayoutItem::Kind::Box:
        c.box(r, item.pen, item.fill, item.color);
        break;
    case LayoutItem::Kind::Line:
        c.line(item.line.translated(origin), item.pen, item.color);
        break;
    case LayoutItem::Kind::Text:
        c.cellText(r, expand(item.text, record, page), m_layout.family, size, item.bold, item.align,
                   item.wrap, item.color);
        break;
    case LayoutItem::Kind::Label:
        c.cellText(r, m_captions.value(item.field.toLower(), item.text) + item.suffix, m_layout.family, size,
                   item.bold, item.align, item.wrap, item.color);
        break;
    case LayoutItem::Kind::Field:
        c.cellText(r, fieldText(item, record), m_layout.family, size, item.bold, item.align, item.wrap,
                   item.color);
        break;
    case LayoutItem::Kind::Photo: {
        const QImage photo = QImage::fromData(m_records.bytes(record, item.field));
        if (photo.isNull())
            c.cellText(r, QStringLiteral("照片"), m_layout.family, size, false, Qt::AlignHCenter, false,
                       QColor(0xa0, 0xa0, 0xa0));
        else
            c.picture(r, photo);
        c.box(r, item.pen, {}, item.color);
        break;
    }
    }
}

void CardDocument::paintPage(Canvas& c, int page) const {
    const CardLayout& l = m_layout;
    for (const LayoutItem& item : l.pageItems)
        drawItem(c, item, QPointF(), -1, page);
    // The cards stand centred in the area inside the margins.
    const double areaW = l.paper.width() - l.margins.left() - l.margins.right();
    const double areaH = l.paper.height() - l.margins.top() - l.margins.bottom();
    const double usedW = l.columns * l.card.width() + (l.columns - 1) * l.gap.width();
    const double usedH = l.rows * l.card.height() + (l.rows - 1) * l.gap.height();
    const QPointF start(l.margins.left() + qMax(0.0, areaW - usedW) / 2,
                        l.margins.top() + qMax(0.0, areaH - usedH) / 2);
    const int per = l.cardsPerPage();
    for (int i = 0; i < per; ++i) {
        const int record = page * per + i;
        if (record >= m_records.size()) break;
        const QPointF origin = start + QPointF((i % l.columns) * (l.card.width() + l.gap.width()),
                                               (i / l.columns) * (l.card.height() + l.gap.height()));
        for (const LayoutItem& item : l.items)
            drawItem(c, item, origin, record, page);
    }
}

} // namespace zq
