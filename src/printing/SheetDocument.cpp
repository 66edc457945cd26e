#include "SheetDocument.h"

#include "shell/Globals.h"

#include <cmath>
#include <QPainter>

namespace zq {

namespace {

constexpr double kTwipsPerMm = 56.7;
constexpr double kPageWidth = 210, kPageHeight = 295;
constexpr double kLeftMargin = 10, kRightMargin = 10, kTopMargin = 30, kBottomMargin = 10;
// Every horizontal position sits this far left of the margin's arithmetic.
constexpr double kShift = -240;
// Starting widths of the eight columns, in characters of the base font.
constexpr int kColumnChars[8] = {3, 10, 12, 10, 9, 9, 8, 15};
constexpr double kBasePoints = 9;
const QString kProbe = QStringLiteral("繁");
constexpr double kThin = 0.2, kThick = 0.5; // line weights, mm

double mm(double twips) {
    return twips / kTwipsPerMm;
}

QString baseFamily() {
    return printFamily(QStringLiteral("宋体"));
}

// Twips of a measure the canvas gives in device dots.
double twipsOf(const Canvas& c, double dots) {
    return dots / c.dotsPerMm() * kTwipsPerMm;
}

// The sheet being drawn: the grid and the canvas, with the few strokes every block uses.
class Sheet {
public:
    Sheet(Canvas& canvas, const SheetGrid& grid)
        : c(canvas)
        , g(grid) {}

    double rowTop(int row) const { return g.top + row * g.row(); }
    void box(double l, double t, double r, double b, double pen = kThin) {
        c.box(QRectF(mm(l), mm(t), mm(r - l), mm(b - t)), pen);
    }
    // A text in the cell from boundary `from` to `to` on a row.
    void text(const QString& s, double l, double r, int row, int align) {
        PrintTextCell(c, s, l, r, rowTop(row), g.textHeight, g.gap, align);
    }
    // A label cell: framed, its caption centred; a caption the dictionary made too long for its cell
    // is wrapped and shrunk into it rather than cut.
    void label(const QString& s, double l, double r, int row) {
        box(l, rowTop(row), r, rowTop(row + 1));
        const double width = twipsOf(c, c.metrics(c.font(baseFamily(), kBasePoints)).horizontalAdvance(s));
        text(s, l, r, row, width > r - l - 48 ? -1 : 1);
    }
    // A value cell: framed, the value fitted in whole (see FitTextCell) and noted with its caption.
    void value(const QString& caption, const QString& s, double l, double r, int row, bool oneLine = false) {
        box(l, rowTop(row), r, rowTop(row + 1));
        if (m_values) place(caption, s, l, r, rowTop(row), oneLine);
    }
    void place(const QString& caption, const QString& s, double l, double r, double top, bool oneLine = false) {
        const QString shown = s.trimmed();
        if (shown.isEmpty()) return;
        const bool fits = FitTextCell(c, shown, l, r, top, g.row(), kBasePoints, oneLine);
        if (m_cells)
            m_cells->append({QString(caption).remove(QLatin1Char(' ')), shown,
                             QRectF(mm(l), mm(top), mm(r - l), mm(g.row())), fits});
    }
    struct Column {
        const char* field; // whose dictionary caption heads the column
        const char* literal;
        int from, to;
    };
    // A block's header row of captions on `row` and its data rows under it, at most `rows`.
    void table(const SheetCaptions& cap, const QString& tableName, std::initializer_list<Column> columns,
               int row, const QVector<QStringList>& data, int rows) {
        QStringList captions;
        for (const Column& col : columns) {
            captions << cap.of(tableName, QLatin1String(col.field), QString::fromUtf8(col.literal));
            label(captions.last(), g.c[col.from], g.c[col.to], row);
        }
        for (int i = 0; i < rows; ++i) {
            int k = 0;
            for (const Column& col : columns) {
                // The results keep their one line, as the sheet has always printed them; one too
                // long for it is cut and told.
                value(captions.at(k), data.value(i).value(k), g.c[col.from], g.c[col.to], row + 1 + i,
                      tableName == QLatin1String("tRsResult") && qstrcmp(col.field, "fyj") == 0);
                ++k;
            }
        }
    }
    // A block's title, one character to a row in the first column, and its outer frame drawn heavier.
    void block(const QString& title, int first, int rows) {
        const QString chars = QString(title).remove(QLatin1Char(' '));
        const double t = rowTop(first), b = rowTop(first + rows);
        box(g.c[0], t, g.c[1], b);
        const double step = (b - t) / qMax<qsizetype>(1, chars.size());
        for (qsizetype i = 0; i < chars.size(); ++i) {
            double l = g.c[0], r = g.c[1];
            PrintTextCell(c, chars.mid(i, 1), l, r, t + i * step, g.textHeight, step - g.textHeight, 1);
        }
        box(g.c[0], t, g.c[8], b, kThick);
    }

    Canvas& c;
    const SheetGrid& g;
    bool m_values = true;
    QVector<SheetCell>* m_cells = nullptr;
};

// The page head: the company over the page, the person's code and branch under it.
void drawHead(Sheet& s, const PersonSheet& p, const SheetCaptions& cap) {
    Canvas& c = s.c;
    const QFont title = c.font(printFamily(QStringLiteral("楷体")), 18, true);
    const QFontMetricsF& fm = c.metrics(title);
    c.textLine(0, mm(s.g.top) - 2 * mm(s.g.row()) + fm.descent() / c.dotsPerMm(), kPageWidth, companyName(),
               title, Qt::AlignHCenter);
    const int row = -1;
    s.text(cap.label(0) + QStringLiteral(": ") + p.code, s.g.c[0], s.g.c[5], row, 0);
    if (p.code.isEmpty()) {
        s.text(cap.label(37) + QStringLiteral(":                "), s.g.c[7], s.g.c[8], row, 0);
        return;
    }
    // A long branch name is fitted into its cell like a value.
    const QString branch = cap.label(37) + QStringLiteral(": ") + p.value(QStringLiteral("fUnit"));
    s.place(cap.label(37), branch, s.g.c[7], s.g.c[8], s.rowTop(row));
}

struct HeadCell {
    int ordinal; // label of the master record screen; -1: a dictionary caption
    const char* literal;
    const char* captionField;
    const char* field;
    int labelFrom, labelTo, valueFrom, valueTo;
};

// Rows 1 to 16 of the head block. Rows 1 and 2 take dictionary captions; the birthday asks for a
// field that does not exist, so that it always shows its literal.
const QVector<QVector<HeadCell>>& headRows() {
    static const QVector<QVector<HeadCell>> rows = {
        {{-1, "姓    名", "fName", "fName", 0, 2, 2, 3},
         {-1, "性    别", "fSex", "fSex", 3, 4, 4, 5},
         {-1, "婚    否", "fHY", "fHY", 5, 6, 6, 7}},
        {{-1, "出生日期", "fBirthDayr", "fBirthDay", 0, 2, 2, 3},
         {-1, "民    族", "fMz", "fMz", 3, 4, 4, 5},
         {-1, "政治面貌", "fZz", "fZz", 5, 6, 6, 7}},
        {{8, "", "", "fjg", 0, 2, 2, 3}, {7, "", "", "fSfz", 3, 4, 4, 5}, {27, "", "", "idlimt", 5, 6, 6, 7}},
        {{6, "", "", "fhj", 0, 2, 2, 4},
         {29, "", "", "staycode", 3, 4, 4, 5},
         {30, "", "", "staytime", 5, 6, 6, 7}},
        {{28, "", "", "bodycondition", 0, 2, 2, 3}, {10, "", "", "fXzz", 3, 4, 4, 8}},
        {{12, "", "", "fPhone", 0, 2, 2, 3},
         {33, "", "", "fBp", 3, 4, 4, 5},
         {34, "", "", "mobilephone", 5, 6, 6, 8}},
        {{13, "", "", "fXl", 0, 2, 2, 3},
         {14, "", "", "fzy", 3, 4, 4, 5},
         {36, "", "", "WorkTime", 5, 6, 6, 8}},
        {{15, "", "", "fXx", 0, 2, 2, 5}, {35, "", "", "grudtime", 5, 6, 6, 8}},
        {{11, "", "", "fygxz", 0, 2, 2, 3},
         {31, "", "", "contracttime", 3, 4, 4, 5},
         {32, "", "", "Contractlimt", 5, 6, 6, 8}},
        {{25, "", "", "fSpDay", 0, 2, 2, 3},
         {38, "", "", "leavetime", 3, 4, 4, 5},
         {39, "", "", "leaveReason", 5, 6, 6, 8}},
        {{16, "", "", "fwy", 0, 2, 2, 3},
         {17, "", "", "fwysp", 3, 4, 4, 5},
         {22, "", "", "fother1", 5, 6, 6, 8}},
        {{18, "", "", "FZc", 0, 2, 2, 3},
         {19, "", "", "fzcday", 3, 4, 4, 5},
         {40, "", "", "worklimt", 5, 6, 6, 8}},
        {{24, "", "", "fgzname", 0, 2, 2, 3},
         {20, "", "", "fRz", 3, 4, 4, 5},
         {26, "", "", "fBmName", 5, 6, 6, 8}},
        {{21, "", "", "fTc", 0, 2, 2, 5}, {23, "", "", "FOther2", 5, 6, 6, 8}},
        {{41, "", "", "roadmny", 0, 2, 2, 3},
         {42, "", "", "seepnt", 3, 4, 4, 5},
         {43, "", "", "safeedu", 5, 6, 6, 8}},
        {{44, "", "", "lyunit", 0, 2, 2, 5}, {45, "", "", "trustman", 5, 6, 6, 8}},
    };
    return rows;
}

void drawFront(Sheet& s, const PersonSheet& p, const QImage& photo, const SheetCaptions& cap) {
    const SheetGrid& g = s.g;
    const QString basic = QStringLiteral("tRsBasic");
    int row = 0;
    for (const QVector<HeadCell>& cells : headRows()) {
        for (const HeadCell& h : cells) {
            const QString caption =
                h.ordinal < 0 ? cap.of(basic, QLatin1String(h.captionField), QString::fromUtf8(h.literal))
                              : cap.label(h.ordinal);
            s.label(caption, g.c[h.labelFrom], g.c[h.labelTo], row);
        }
        for (const HeadCell& h : cells)
            s.value(h.ordinal < 0 ? cap.of(basic, QLatin1String(h.captionField), QString::fromUtf8(h.literal))
                                  : cap.label(h.ordinal),
                    p.value(QLatin1String(h.field)), g.c[h.valueFrom], g.c[h.valueTo], row);
        ++row;
    }
    // Row 17: five pairs side by side over the whole width.
    {
        static const int ordinals[5] = {46, 47, 48, 49, 50};
        static const char* const fields[5] = {"bodyhigh", "bodytype", "neckline", "waistline", "shoecode"};
        const double pair = (g.c[8] - g.c[0]) / 5;
        for (int i = 0; i < 5; ++i) {
            const double l = g.c[0] + i * pair, mid = l + pair * 0.55, r = i == 4 ? g.c[8] : l + pair;
            s.label(cap.label(ordinals[i]), l, mid, row);
            s.value(cap.label(ordinals[i]), p.value(QLatin1String(fields[i])), mid, r, row);
        }
        ++row;
    }
    // The photo beside rows 1 to 4.
    s.box(g.c[7], s.rowTop(0), g.c[8], s.rowTop(4));
    if (!photo.isNull()) {
        const double pad = 0.5;
        s.c.picture(QRectF(mm(g.c[7]) + pad, mm(s.rowTop(0)) + pad, mm(g.c[8] - g.c[7]) - 2 * pad,
                           mm(s.rowTop(4) - s.rowTop(0)) - 2 * pad),
                    photo);
    }
    s.box(g.c[0], s.rowTop(0), g.c[8], s.rowTop(row), kThick);

    s.block(QStringLiteral("学 习 及 受 训 情 况"), row, kSheetStudyRows + 1);
    s.table(cap, QStringLiteral("tRsStudy"),
            {{"fYear", "起止年月", 1, 3}, {"fXx", "学    校", 3, 5}, {"fZy", "专    业", 5, 8}}, row, p.study,
            kSheetStudyRows);
    row += kSheetStudyRows + 1;

    s.block(QStringLiteral("主 要 工 作 简 历"), row, kSheetWorkRows + 1);
    s.table(cap, QStringLiteral("tRsWork"),
            {{"fYear", "起止年月", 1, 3},
             {"fBm", "单    位", 3, 5},
             {"fRz", "任    职", 5, 6},
             {"fWk", "所从事工作", 6, 8}},
            row, p.work, kSheetWorkRows);
}

void drawBack(Sheet& s, const PersonSheet& p, const SheetCaptions& cap) {
    const SheetGrid& g = s.g;
    const QString spouse = QStringLiteral("tRsBasic_P");
    int row = 0;
    s.block(QStringLiteral("主 要 家 庭 成 员"), row, kSheetFamilyRows + 1);
    s.table(cap, QStringLiteral("tRsFamily"),
            {{"fCh", "称    谓", 1, 2},
             {"fName", "姓    名", 2, 3},
             {"fNy", "出生年月", 3, 4},
             {"fDw", "工作单位、职务或住址", 4, 7},
             {"fZz", "政治面貌", 7, 8}},
            row, p.family, kSheetFamilyRows);
    row += kSheetFamilyRows + 1;

    // The spouse: label, then value, on the block's four rows.
    struct Pair {
        const char* field;
        const char* literal;
        int from, mid, to;
    };
    static const QVector<QVector<Pair>> spouseRows = {
        {{"fpName", "姓    名", 1, 2, 3}, {"fpBirthday", "出生年月", 3, 4, 6}, {"fpZz", "政治面貌", 6, 7, 8}},
        {{"fpMz", "民    族", 1, 2, 3}, {"fpJg", "籍    贯", 3, 4, 8}},
        {{"fpXl", "文化程度", 1, 2, 3}, {"fpHj", "户籍所在地", 3, 4, 6}, {"fpPhone", "电    话", 6, 7, 8}},
        {{"fpDw", "工作单位", 1, 2, 6}, {"fpRz", "职   务", 6, 7, 8}},
    };
    s.block(QStringLiteral("配 偶 情 况"), row, 4);
    for (int i = 0; i < 4; ++i)
        for (const Pair& x : spouseRows.at(i)) {
            const QString caption = cap.of(spouse, QLatin1String(x.field), QString::fromUtf8(x.literal));
            s.label(caption, g.c[x.from], g.c[x.mid], row + i);
            s.value(caption, p.spouse.value(QString::fromLatin1(x.field).toLower()), g.c[x.mid], g.c[x.to],
                    row + i);
        }
    row += 4;

    s.block(QStringLiteral("主 要 业 绩"), row, kSheetResultRows + 1);
    s.table(cap, QStringLiteral("tRsResult"), {{"fYear", "年    月", 1, 3}, {"fyj", "业    绩", 3, 8}}, row,
            p.results, kSheetResultRows);
    row += kSheetResultRows + 1;

    s.block(QStringLiteral("奖 励 与 处 分"), row, kSheetAwardRows + 1);
    s.table(cap, QStringLiteral("tRsMeed"),
            {{"fYear", "时    间", 1, 3}, {"fyy", "事    件", 3, 7}, {"fjc", "奖励或处罚", 7, 8}}, row,
            p.awards, kSheetAwardRows);
}

// The base font's measures in twips: the probe character's width and the line's height, never
// less than the font's nominal size.
void measureBase(Canvas& c, double& w, double& h) {
    const QFont f = c.font(baseFamily(), kBasePoints);
    const QFontMetricsF& fm = c.metrics(f);
    const double nominal = kBasePoints * 20;
    w = qMax(nominal, twipsOf(c, fm.horizontalAdvance(kProbe)));
    h = qMax(nominal, twipsOf(c, fm.height()));
}

} // namespace

SheetGrid SheetGrid::make(double w, double h) {
    SheetGrid g;
    g.charWidth = w;
    g.textHeight = h;
    const double W = std::round((kPageWidth - kLeftMargin - kRightMargin) * kTwipsPerMm - 48);
    const double H = std::round((kPageHeight - kTopMargin - kBottomMargin) * kTwipsPerMm);
    g.gap = std::round((H / 28 - h) * 0.8);
    int total = 0;
    for (int ch : kColumnChars)
        total += ch;
    const double sum = total * w + 8 * 48;
    // The excess (negative) or the spare characters, shared out in proportion to the columns.
    double left = sum >= W ? -(sum - W) / w : (W - sum) / w;
    int charsLeft = total;
    g.c[0] = kLeftMargin * kTwipsPerMm + 24 + kShift;
    for (int i = 0; i < 8; ++i) {
        const double share = std::round(left * kColumnChars[i] / charsLeft);
        left -= share;
        charsLeft -= kColumnChars[i];
        g.c[i + 1] = g.c[i] + (kColumnChars[i] + share) * w + 48;
    }
    g.top = kTopMargin * kTwipsPerMm;
    return g;
}

void PrintTextCell(Canvas& c, const QString& text, double& left, double& right, double top, double textHeight,
                   double gap, int align, double points) {
    if (text.isEmpty()) return;
    QPainter& p = c.painter();
    const QString family = baseFamily();
    QFont f = c.font(family, points);
    const double cellHeight = textHeight + gap;
    const auto width = [&](const QString& s) { return twipsOf(c, c.metrics(f).horizontalAdvance(s)); };
    const auto baseline = [&](double lineTop, double lineHeight) {
        const QFontMetricsF& fm = c.metrics(f);
        return mm(lineTop) + (mm(lineHeight) + (fm.ascent() - fm.descent()) / c.dotsPerMm()) / 2;
    };
    if (align == -1) {
        const double avail = right - left - 48;
        if (avail <= 0) return;
        double size = points;
        const auto lineCount = [&] { return int(std::ceil(width(text) / avail)); };
        double lineHeight = twipsOf(c, c.metrics(f).height());
        int lines = lineCount();
        while (lines * lineHeight > cellHeight && size > 1) {
            size -= 0.25;
            f = c.font(family, size);
            lines = lineCount();
            lineHeight = twipsOf(c, c.metrics(f).height());
        }
        // Cut into lines, each as long as fits.
        QStringList cut;
        QString rest = text;
        while (!rest.isEmpty()) {
            qsizetype n = qBound<qsizetype>(1, qsizetype(2 * avail / width(kProbe)), rest.size());
            while (n < rest.size() && width(rest.left(n + 1)) <= avail)
                ++n;
            while (n > 1 && width(rest.left(n)) > avail)
                --n;
            cut << rest.left(n);
            rest = rest.mid(n);
        }
        const double first = cut.size() > 1 ? top + 48 : top + (cellHeight - lineHeight) / 2;
        for (qsizetype i = 0; i < cut.size(); ++i) {
            p.setFont(f);
            p.setPen(Qt::black);
            p.drawText(QPointF(c.dots(mm(left + 24)), c.dots(baseline(first + i * lineHeight, lineHeight))),
                       cut.at(i));
        }
        return;
    }
    const double w = width(text);
    double x = left + 24;
    if (align == 1) x = left + (right - left - w) / 2;
    if (align == 2) x = right - w - 24;
    const double y = baseline(top, cellHeight);
    p.setFont(f);
    p.setPen(Qt::black);
    // Text wider than its cell stays on one line and is cut at the cell's edge.
    const bool clip = w > right - left - 24;
    if (clip) {
        p.save();
        p.setClipRect(c.dots(QRectF(mm(left), mm(top), mm(right - left), mm(cellHeight))));
        x = left + 24;
    }
    if (align == 3 && text.size() > 1 && !clip) {
        const double step = (right - left - 48 - w) / (text.size() - 1);
        double at = left + 24;
        for (const QChar ch : text) {
            p.drawText(QPointF(c.dots(mm(at)), c.dots(y)), QString(ch));
            at += width(QString(ch)) + step;
        }
    } else {
        p.drawText(QPointF(c.dots(mm(x)), c.dots(y)), text);
    }
    if (clip) p.restore();
}

bool FitTextCell(Canvas& c, const QString& text, double left, double right, double top, double height,
                 double points, bool oneLine) {
    if (text.isEmpty()) return true;
    const double avail = right - left - 48;
    if (avail <= 0) return false;
    const QString family = baseFamily();
    const auto widthAt = [&](double size) {
        return twipsOf(c, c.metrics(c.font(family, size)).horizontalAdvance(text));
    };
    const auto lineHeightAt = [&](double size) {
        return twipsOf(c, c.metrics(c.font(family, size)).height());
    };
    const auto linesAt = [&](double size, bool* brokeWord) {
        return breakLines(text, c.font(family, size), c.dots(mm(avail)), c.painter().device(), brokeWord);
    };
    const auto draw = [&](const QStringList& lines, double size, bool clip) {
        QPainter& p = c.painter();
        const QFont f = c.font(family, size);
        const QFontMetricsF& fm = c.metrics(f);
        const double lh = twipsOf(c, fm.height());
        const double first = top + qMax(0.0, (height - lines.size() * lh) / 2);
        if (clip) {
            p.save();
            p.setClipRect(c.dots(QRectF(mm(left), mm(top), mm(right - left), mm(height))));
        }
        p.setFont(f);
        p.setPen(Qt::black);
        for (qsizetype i = 0; i < lines.size(); ++i)
            p.drawText(QPointF(c.dots(mm(left + 24)), c.dots(mm(first + i * lh)) + fm.ascent()), lines.at(i));
        if (clip) p.restore();
    };
    // A number may go a little smaller than text: the 18 digits of an identity card fill the
    // narrowest value cell at about 5.75 points.
    constexpr double kOneLineSmallest = 7, kSmallest = 6, kWordSmallest = 5, kStep = 0.25;
    if (oneLine) {
        const bool fits = widthAt(points) <= avail;
        draw({text}, points, !fits);
        return fits;
    }
    for (double size = points; size >= kOneLineSmallest; size -= kStep)
        if (widthAt(size) <= avail) {
            draw({text}, size, false);
            return true;
        }
    // Lines that keep every number whole first (an identity card rather smaller on one line than
    // broken), then any lines that fit.
    for (bool wholeWords : {true, false})
        for (double size = points; size >= (wholeWords ? kWordSmallest : kSmallest); size -= kStep) {
            bool broke = false;
            const QStringList lines = linesAt(size, &broke);
            if ((!wholeWords || !broke) && lines.size() * lineHeightAt(size) <= height) {
                draw(lines, size, false);
                return true;
            }
        }
    draw(linesAt(kSmallest, nullptr), kSmallest, true);
    return false;
}

void DrawRS(Canvas& canvas, const PersonSheet& sheet, const QImage& photo, const SheetCaptions& captions,
            int side, bool values, QVector<SheetCell>* cells) {
    double w = 0, h = 0;
    measureBase(canvas, w, h);
    const SheetGrid grid = SheetGrid::make(w, h);
    Sheet s(canvas, grid);
    s.m_values = values;
    s.m_cells = cells;
    drawHead(s, sheet, captions);
    if (side == 2)
        drawBack(s, sheet, captions);
    else
        drawFront(s, sheet, values ? photo : QImage(), captions);
}

// ---- SheetDocument ----------------------------------------------------------------------------

SheetDocument::SheetDocument(QStringList codes, SheetSides sides, int copies, bool blank)
    : m_codes(std::move(codes))
    , m_sides(sides)
    , m_copies(qMax(1, copies))
    , m_blank(blank)
    , m_captions(SheetCaptions::load()) {
    if (m_blank && m_codes.isEmpty()) m_codes << QString();
}

int SheetDocument::pageCount() const {
    return int(m_codes.size()) * (m_sides == SheetSides::Both ? 2 : 1) * m_copies;
}

const PersonSheet& SheetDocument::person(int index) const {
    if (index != m_loaded) {
        m_sheet = m_blank ? PersonSheet{} : ReadPersonSheet(m_codes.at(index));
        // Decoded once a person, so the PDF holds each photo once.
        m_photo = m_sheet.photo.isEmpty() ? QImage() : QImage::fromData(m_sheet.photo);
        m_loaded = index;
    }
    return m_sheet;
}

void SheetDocument::paintPage(Canvas& canvas, int page) const {
    const int sides = m_sides == SheetSides::Both ? 2 : 1;
    const int perPerson = sides * m_copies;
    const int index = page / perPerson;
    const int side = m_sides == SheetSides::Both ? 1 + (page % perPerson) % 2 : int(m_sides);
    const PersonSheet& p = person(index);
    m_cells.clear();
    DrawRS(canvas, p, m_photo, m_captions, side, !p.code.isEmpty(), &m_cells);
    for (const SheetCell& cell : m_cells) {
        if (cell.fits) continue;
        const QString line =
            QStringLiteral("%1（%2）%3的“%4”字数太多，缩到最小字号并折行仍放不下，纸上只印出一部分")
                .arg(p.value(QStringLiteral("fName")), p.code,
                     side == 2 ? QStringLiteral("反面") : QStringLiteral("正面"), cell.caption);
        if (!m_misfits.contains(line)) m_misfits << line;
    }
}

} // namespace zq
