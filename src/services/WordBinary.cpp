#include "WordBinary.h"

#include <QtEndian>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace zq {

namespace {

// Little-endian reads that fail instead of reading past the end.
struct Bytes {
    const char* data = nullptr;
    qsizetype size = 0;

    Bytes() = default;
    explicit Bytes(const QByteArray& a) : data(a.constData()), size(a.size()) {}
    Bytes(const char* d, qsizetype n) : data(d), size(n) {}

    bool has(qint64 at, qint64 n) const { return at >= 0 && n >= 0 && at <= size && n <= size - at; }
    std::optional<quint8> u8(qint64 at) const {
        if (!has(at, 1)) return {};
        return quint8(data[at]);
    }
    std::optional<quint16> u16(qint64 at) const {
        if (!has(at, 2)) return {};
        return qFromLittleEndian<quint16>(data + at);
    }
    std::optional<quint32> u32(qint64 at) const {
        if (!has(at, 4)) return {};
        return qFromLittleEndian<quint32>(data + at);
    }
};

constexpr quint32 kEndOfChain = 0xFFFFFFFEu;
constexpr quint32 kNoStream = 0xFFFFFFFFu;

// The compound file: a small file system of sectors chained through an allocation table.
class CompoundFile {
public:
    explicit CompoundFile(const QByteArray& file) : file_(file), bytes_(file) {}

    bool open() {
        if (!file_.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1")) return false;
        const auto shift = bytes_.u16(0x1E), miniShift = bytes_.u16(0x20);
        if (!shift || !miniShift || (*shift != 9 && *shift != 12) || *miniShift != 6) return false;
        sector_ = 1 << *shift;
        const quint32 fatSectors = bytes_.u32(0x2C).value_or(0);
        const quint32 dirStart = bytes_.u32(0x30).value_or(kEndOfChain);
        miniCutoff_ = bytes_.u32(0x38).value_or(4096);
        const quint32 miniFatStart = bytes_.u32(0x3C).value_or(kEndOfChain);
        quint32 difat = bytes_.u32(0x44).value_or(kEndOfChain);
        const qint64 sectors = (bytes_.size + sector_ - 1) / sector_;
        if (fatSectors > sectors) return false;

        // The table's own sectors: 109 named in the header, the rest in a chain of list sectors.
        std::vector<quint32> fatList;
        for (int i = 0; i < 109 && fatList.size() < fatSectors; ++i)
            fatList.push_back(bytes_.u32(0x4C + 4 * i).value_or(kNoStream));
        const int perList = sector_ / 4 - 1;
        for (qint64 guard = 0; fatList.size() < fatSectors && difat < kEndOfChain; ++guard) {
            if (guard > sectors) return false;
            const qint64 at = offset(difat);
            for (int i = 0; i < perList && fatList.size() < fatSectors; ++i)
                fatList.push_back(bytes_.u32(at + 4 * i).value_or(kNoStream));
            difat = bytes_.u32(at + 4 * perList).value_or(kEndOfChain);
        }
        fat_.reserve(fatList.size() * (sector_ / 4));
        for (quint32 s : fatList) {
            const qint64 at = offset(s);
            if (!bytes_.has(at, sector_)) return false;
            for (int i = 0; i < sector_ / 4; ++i)
                fat_.push_back(*bytes_.u32(at + 4 * i));
        }

        if (!chain(fat_, dirStart, sector_, [this](quint32 s) { return offset(s); }, -1, &directory_))
            return false;
        if (directory_.size() < 128) return false;
        const Bytes root(directory_);
        const quint32 miniStart = root.u32(116).value_or(kEndOfChain);
        const quint32 miniSize = root.u32(120).value_or(0);
        if (miniStart < kEndOfChain &&
            !chain(fat_, miniStart, sector_, [this](quint32 s) { return offset(s); }, miniSize, &ministream_))
            return false;
        if (miniFatStart < kEndOfChain) {
            QByteArray table;
            if (!chain(fat_, miniFatStart, sector_, [this](quint32 s) { return offset(s); }, -1, &table))
                return false;
            const Bytes t(table);
            for (qint64 i = 0; i + 4 <= t.size; i += 4)
                miniFat_.push_back(*t.u32(i));
        }
        return true;
    }

    // A stream at the top of the file, by name; nothing when it is missing or its chain is broken.
    std::optional<QByteArray> stream(const QString& name) const {
        const Bytes dir(directory_);
        const qint64 entries = dir.size / 128;
        // The top level is a tree under the root entry; walk it rather than every entry, so that a
        // document embedded as an object is not taken for this one.
        std::vector<quint32> pending{dir.u32(76).value_or(kNoStream)};
        std::vector<bool> seen(size_t(entries), false);
        while (!pending.empty()) {
            const quint32 e = pending.back();
            pending.pop_back();
            if (e >= entries || seen[e]) continue;
            seen[e] = true;
            const qint64 at = qint64(e) * 128;
            const int nameBytes = qMin<int>(dir.u16(at + 64).value_or(0), 64);
            const QString entryName =
                QString::fromUtf16(reinterpret_cast<const char16_t*>(dir.data + at), qMax(0, nameBytes / 2 - 1));
            if (dir.u8(at + 66) == 2 && entryName == name) {
                const quint32 start = *dir.u32(at + 116);
                const quint32 size = *dir.u32(at + 120);
                QByteArray out;
                const bool ok = size < miniCutoff_
                                    ? chain(miniFat_, start, 64, [](quint32 s) { return qint64(s) * 64; }, size,
                                            &out, &ministream_)
                                    : chain(fat_, start, sector_, [this](quint32 s) { return offset(s); }, size, &out);
                if (!ok) return {};
                return out;
            }
            pending.push_back(*dir.u32(at + 68));
            pending.push_back(*dir.u32(at + 72));
        }
        return {};
    }

private:
    qint64 offset(quint32 s) const { return (qint64(s) + 1) * sector_; }

    // Follows a chain of sectors from start and gathers them, cut to size (or whole when size < 0).
    template <typename Offset>
    bool chain(const std::vector<quint32>& table, quint32 start, int unit, Offset at, qint64 size, QByteArray* out,
               const QByteArray* from = nullptr) const {
        const Bytes source = from ? Bytes(*from) : bytes_;
        out->clear();
        if (size > bytes_.size) return false; // a stream cannot be larger than the file holding it
        quint32 s = start;
        for (size_t steps = 0; s < kEndOfChain; ++steps) {
            if (steps > table.size() || s >= table.size()) return false; // a loop or a link outside
            const qint64 o = at(s);
            if (!source.has(o, unit)) return false;
            out->append(source.data + o, unit);
            if (size >= 0 && out->size() >= size) break;
            s = table[s];
        }
        if (size >= 0) {
            if (out->size() < size) return false;
            out->truncate(size);
        }
        return true;
    }

    const QByteArray& file_;
    Bytes bytes_;
    int sector_ = 512;
    quint32 miniCutoff_ = 4096;
    std::vector<quint32> fat_;
    std::vector<quint32> miniFat_;
    QByteArray directory_;
    QByteArray ministream_;
};

// How many bytes follow a property modifier, by its kind (the top three bits).
std::optional<qint64> operandSize(const Bytes& b, qint64 at, quint16 sprm) {
    switch (sprm >> 13) {
    case 0:
    case 1:
        return 1;
    case 2:
    case 4:
    case 5:
        return 2;
    case 3:
        return 4;
    case 7:
        return 3;
    default:
        // Variable: a length byte first (a table's cell definitions carry a two-byte length).
        if (sprm == 0xD608) {
            const auto n = b.u16(at);
            if (!n) return {};
            return qint64(*n) + 1;
        }
        const auto n = b.u8(at);
        if (!n) return {};
        return qint64(*n) + 1;
    }
}

// Whether a list of property modifiers marks its text as deleted in a revision.
bool marksDeleted(const Bytes& grpprl) {
    constexpr quint16 kDeleted = 0x0800;
    for (qint64 at = 0; at + 2 <= grpprl.size;) {
        const quint16 sprm = *grpprl.u16(at);
        at += 2;
        const auto n = operandSize(grpprl, at, sprm);
        if (!n || !grpprl.has(at, *n)) return false;
        if (sprm == kDeleted) return grpprl.u8(at).value_or(0) == 1;
        at += *n;
    }
    return false;
}

struct Piece {
    quint32 cpStart, cpEnd;
    quint32 fc;       // byte offset of the first character in the document stream
    bool compressed;  // one byte a character instead of two
    bool deleted;     // the whole piece carries a deletion mark
};

// The characters of the 8-bit pieces: Latin-1, but for the range the 1252 code page fills.
char16_t fromCompressed(quint8 c) {
    static const char16_t high[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    return c >= 0x80 && c < 0xA0 ? high[c - 0x80] : char16_t(c);
}

// Ranges of the document stream (byte offsets) whose characters are marked deleted.
using Ranges = std::vector<std::pair<quint32, quint32>>;

bool deletedRanges(const Bytes& doc, const Bytes& table, quint32 fcBte, quint32 lcbBte, Ranges* out) {
    if (lcbBte < 4) return true;
    if (!table.has(fcBte, lcbBte)) return false;
    const qint64 n = (qint64(lcbBte) - 4) / 8;
    for (qint64 i = 0; i < n; ++i) {
        const quint32 pn = *table.u32(fcBte + 4 * (n + 1) + 4 * i) & 0x3FFFFF;
        const qint64 page = qint64(pn) * 512;
        if (!doc.has(page, 512)) return false;
        const Bytes fkp(doc.data + page, 512);
        const int runs = *fkp.u8(511);
        if (runs * 5 + 4 > 511) return false;
        for (int r = 0; r < runs; ++r) {
            const quint32 from = *fkp.u32(4 * r), to = *fkp.u32(4 * (r + 1));
            const int word = *fkp.u8(4 * (runs + 1) + r);
            if (word == 0 || to <= from) continue;
            const int cb = *fkp.u8(2 * word);
            if (2 * word + 1 + cb > 511) return false;
            if (marksDeleted(Bytes(fkp.data + 2 * word + 1, cb))) out->emplace_back(from, to);
        }
    }
    std::sort(out->begin(), out->end());
    return true;
}

bool inRanges(const Ranges& ranges, quint32 fc) {
    auto it = std::upper_bound(ranges.begin(), ranges.end(), std::make_pair(fc, quint32(0xFFFFFFFFu)));
    return it != ranges.begin() && fc < std::prev(it)->second;
}

// Turns a story's characters into text: field codes out, results in, marks dropped.
class TextBuilder {
public:
    void add(char16_t c) {
        switch (c) {
        case 0x13: // a field begins with its code
            fields_.push_back(true);
            return;
        case 0x14: // the code ends, the result follows
            if (!fields_.empty()) fields_.back() = false;
            return;
        case 0x15:
            if (!fields_.empty()) fields_.pop_back();
            return;
        default:
            break;
        }
        if (std::find(fields_.begin(), fields_.end(), true) != fields_.end()) return;
        // A note begins with its mark and a tab before its words.
        const bool noteMark = c == 0x02;
        if (c == 0x09 && lastNote_) {
            lastNote_ = false;
            return;
        }
        lastNote_ = noteMark;
        const bool cellMark = c == 0x07;
        switch (c) {
        case 0x07: // a cell ends (a second mark at once ends the row)
            if (!lastCell_) line();
            break;
        case 0x0D:
        case 0x0B:
        case 0x0C:
        case 0x0E:
            line();
            break;
        case 0x09:
            text_ += QLatin1Char('\t');
            break;
        case 0x1E: // a hyphen that does not break
            text_ += QLatin1Char('-');
            break;
        default:
            if (c >= 0x20) text_ += QChar(c);
            break; // pictures, note marks, drawn objects, optional hyphens
        }
        lastCell_ = cellMark;
    }
    // A story (the notes, the text boxes) starts on a line of its own.
    void endStory() {
        fields_.clear();
        if (!text_.isEmpty() && !text_.endsWith(QLatin1Char('\r'))) line();
    }
    QString take() {
        while (text_.endsWith(QLatin1Char('\r')))
            text_.chop(1);
        return std::move(text_);
    }

private:
    void line() { text_ += QLatin1Char('\r'); }

    QString text_;
    std::vector<bool> fields_; // for each open field, whether its code is still being read
    bool lastCell_ = false;
    bool lastNote_ = false;
};

constexpr quint16 kIdent = 0xA5EC;
constexpr quint16 kFirstVersion = 0x00C1; // the 1997 format; older ones are laid out otherwise

} // namespace

WordBinaryResult ReadWordBinaryText(const QByteArray& file, QString* text) {
    text->clear();
    CompoundFile cf(file);
    if (!cf.open()) return WordBinaryResult::NotWord;
    const auto docStream = cf.stream(QStringLiteral("WordDocument"));
    if (!docStream) return WordBinaryResult::NotWord;
    const Bytes doc(*docStream);
    if (doc.u16(0) != kIdent || doc.u16(2).value_or(0) < kFirstVersion) return WordBinaryResult::NotWord;
    const quint16 flags = doc.u16(0x0A).value_or(0);
    if (flags & 0x0100 || flags & 0x8000) return WordBinaryResult::Encrypted;

    // The header's arrays: shorts, longs (the story lengths), then offset/length pairs.
    const qint64 csw = doc.u16(32).value_or(0);
    const qint64 lwAt = 32 + 2 + 2 * csw;
    const qint64 cslw = doc.u16(lwAt).value_or(0);
    const qint64 longs = lwAt + 2;
    const qint64 pairsAt = longs + 4 * cslw;
    const qint64 pairs = doc.u16(pairsAt).value_or(0);
    if (cslw < 11 || pairs < 34 || !doc.has(pairsAt + 2, 8 * pairs)) return WordBinaryResult::Broken;
    const auto story = [&](int i) { return *doc.u32(longs + 4 * i); };
    const auto pair = [&](int i) { return std::make_pair(*doc.u32(pairsAt + 2 + 8 * i), *doc.u32(pairsAt + 6 + 8 * i)); };
    const auto [fcClx, lcbClx] = pair(33);
    const auto [fcBte, lcbBte] = pair(12);

    const auto tableStream = cf.stream(flags & 0x0200 ? QStringLiteral("1Table") : QStringLiteral("0Table"));
    if (!tableStream) return WordBinaryResult::Broken;
    const Bytes table(*tableStream);
    if (!table.has(fcClx, lcbClx)) return WordBinaryResult::Broken;

    // The piece table: where each run of characters lies in the document stream.
    std::vector<QByteArray> modifiers;
    std::vector<Piece> pieces;
    for (qint64 at = fcClx, end = qint64(fcClx) + lcbClx; at < end;) {
        const quint8 kind = *table.u8(at);
        if (kind == 1) {
            const auto cb = table.u16(at + 1);
            if (!cb || !table.has(at + 3, *cb)) return WordBinaryResult::Broken;
            modifiers.emplace_back(table.data + at + 3, *cb);
            at += 3 + *cb;
        } else if (kind == 2) {
            const auto lcb = table.u32(at + 1);
            if (!lcb || *lcb < 4 || !table.has(at + 5, *lcb)) return WordBinaryResult::Broken;
            const qint64 n = (qint64(*lcb) - 4) / 12;
            const qint64 cps = at + 5, pcds = cps + 4 * (n + 1);
            for (qint64 i = 0; i < n; ++i) {
                const quint32 fcValue = *table.u32(pcds + 8 * i + 2);
                const quint16 prm = *table.u16(pcds + 8 * i + 6);
                const bool compressed = fcValue & 0x40000000u;
                Piece p{*table.u32(cps + 4 * i), *table.u32(cps + 4 * (i + 1)),
                        compressed ? (fcValue & 0x3FFFFFFFu) / 2 : fcValue, compressed, false};
                if (p.cpEnd < p.cpStart) return WordBinaryResult::Broken;
                // A piece can carry its own modifiers, kept in the list before the table.
                if (prm & 1) {
                    const size_t i2 = prm >> 1;
                    p.deleted = i2 < modifiers.size() && marksDeleted(Bytes(modifiers[i2]));
                }
                pieces.push_back(p);
            }
            break;
        } else {
            return WordBinaryResult::Broken;
        }
    }
    if (pieces.empty()) return WordBinaryResult::Broken;

    Ranges deleted;
    if (!deletedRanges(doc, table, fcBte, lcbBte, &deleted)) return WordBinaryResult::Broken;

    // The stories in order: main text, footnotes, headers, comments, endnotes, text boxes.
    const quint32 lengths[] = {story(3), story(4), story(5), story(7), story(8), story(9)};
    const bool read[] = {true, true, false, false, true, true};
    TextBuilder out;
    quint64 cp = 0;
    for (int s = 0; s < 6; ++s) {
        const quint64 from = cp, to = cp + lengths[s];
        cp = to;
        if (!read[s] || from == to) continue;
        for (const Piece& p : pieces) {
            const quint64 a = qMax<quint64>(from, p.cpStart), b = qMin<quint64>(to, p.cpEnd);
            if (a >= b || p.deleted) continue;
            const int width = p.compressed ? 1 : 2;
            const qint64 first = qint64(p.fc) + qint64(a - p.cpStart) * width;
            if (!doc.has(first, qint64(b - a) * width)) return WordBinaryResult::Broken;
            for (quint64 i = 0; i < b - a; ++i) {
                const qint64 at = first + qint64(i) * width;
                if (!deleted.empty() && inRanges(deleted, quint32(at))) continue;
                out.add(p.compressed ? fromCompressed(*doc.u8(at)) : char16_t(*doc.u16(at)));
            }
        }
        out.endStory();
    }
    *text = out.take();
    return WordBinaryResult::Read;
}

} // namespace zq
