#include "Documents.h"

#include "WordBinary.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QUrl>
#include <QXmlStreamReader>
#include <zip.h>

namespace zq {

namespace {

DocumentOpener& opener() {
    static DocumentOpener o;
    return o;
}

// A part of a document is XML text; anything larger than this is not a document a clerk copies
// from, and refusing it keeps a malformed archive from eating the memory.
constexpr zip_uint64_t kMaxPart = 64u * 1024u * 1024u;

// One member of a zip container, or nothing when the container or the member is missing.
QByteArray readZipMember(const QString& path, const char* member) {
    int error = 0;
    zip_t* archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &error);
    if (!archive) return {};
    QByteArray data;
    zip_stat_t st;
    zip_stat_init(&st);
    if (zip_stat(archive, member, 0, &st) == 0 && (st.valid & ZIP_STAT_SIZE) && st.size <= kMaxPart) {
        if (zip_file_t* f = zip_fopen(archive, member, 0)) {
            data.resize(qsizetype(st.size));
            const zip_int64_t n = zip_fread(f, data.data(), st.size);
            data.resize(n < 0 ? 0 : qsizetype(n));
            zip_fclose(f);
        }
    }
    zip_discard(archive);
    return data;
}

// What the XML of a word-processing file calls its pieces of text, tabs, breaks and paragraphs.
struct Markup {
    QString ns;
    QString text;        // element whose characters are the text ("" = all characters)
    QString paragraph;   // elements that end a line
    QString heading;     //
    QString tab;         //
    QStringList breaks;  // line breaks inside a paragraph
    QString space;       // run of blanks with a count attribute "c"
    QStringList skipped; // elements whose content is not part of the text
    QString aside;       // a note's body: read after its paragraph, not inside its sentence
};

const Markup& docxMarkup() {
    static const Markup m{QStringLiteral("http://schemas.openxmlformats.org/wordprocessingml/2006/main"),
                          QStringLiteral("t"),
                          QStringLiteral("p"),
                          {},
                          QStringLiteral("tab"),
                          {QStringLiteral("br"), QStringLiteral("cr")},
                          {},
                          // Text moved elsewhere is read where it went, as a deletion is not read.
                          {QStringLiteral("moveFrom")},
                          {}};
    return m;
}

const Markup& odtMarkup() {
    static const Markup m{QStringLiteral("urn:oasis:names:tc:opendocument:xmlns:text:1.0"),
                          {},
                          QStringLiteral("p"),
                          QStringLiteral("h"),
                          QStringLiteral("tab"),
                          {QStringLiteral("line-break")},
                          QStringLiteral("s"),
                          {QStringLiteral("note-citation"), QStringLiteral("tracked-changes")},
                          QStringLiteral("note-body")};
    return m;
}

// Elements of other vocabularies whose content is not read: comments beside the text, and the
// fallback branch of alternate content (a text box is read once, from the branch chosen first).
bool skippedOutside(const QXmlStreamReader& r) {
    return r.name() == QLatin1String("annotation") || r.name() == QLatin1String("Fallback");
}

// The text of a document body: paragraphs joined by carriage returns. Empty when the XML is broken.
QString xmlText(const QByteArray& xml, const Markup& m) {
    if (xml.isEmpty()) return {};
    QXmlStreamReader r(xml);
    QString body, notes;
    QString* out = &body; // the notes gather beside the paragraph that cites them
    int inText = 0;   // depth inside the text element (docx) or inside a paragraph (odt)
    int skipping = 0; // depth inside a skipped element
    int aside = 0;    // depth inside a note's body
    bool anyParagraph = false;
    const auto isParagraph = [&](QStringView n) {
        return n == m.paragraph || (!m.heading.isEmpty() && n == m.heading);
    };
    while (!r.atEnd()) {
        r.readNext();
        if (r.isStartElement()) {
            if (r.namespaceUri() != m.ns) {
                if (skippedOutside(r)) ++skipping;
                continue;
            }
            const QStringView n = r.name();
            if (m.skipped.contains(n.toString()) || skipping) {
                ++skipping;
            } else if (!m.aside.isEmpty() && n == m.aside) {
                if (aside++ == 0) out = &notes;
            } else if (isParagraph(n)) {
                if ((anyParagraph || out == &notes) && !out->isEmpty() && !out->endsWith(QLatin1Char('\r')))
                    *out += QLatin1Char('\r');
                if (m.text.isEmpty()) ++inText;
            } else if (!m.text.isEmpty() && n == m.text) {
                ++inText;
            } else if (n == m.tab) {
                *out += QLatin1Char('\t');
            } else if (m.breaks.contains(n.toString())) {
                *out += QLatin1Char('\r');
            } else if (!m.space.isEmpty() && n == m.space) {
                const int c = r.attributes().value(m.ns, QStringLiteral("c")).toInt();
                *out += QString(qMax(1, c), QLatin1Char(' '));
            }
        } else if (r.isEndElement()) {
            if (skipping) {
                if (r.namespaceUri() == m.ns || skippedOutside(r)) --skipping;
                continue;
            }
            if (r.namespaceUri() != m.ns) continue;
            const QStringView n = r.name();
            if (!m.aside.isEmpty() && n == m.aside) {
                if (--aside == 0) out = &body;
            } else if (isParagraph(n)) {
                *out += QLatin1Char('\r');
                if (m.text.isEmpty()) --inText;
                if (out == &body) {
                    anyParagraph = true;
                    // The notes of a paragraph follow it, each its own paragraph.
                    if (!notes.isEmpty() && inText == 0) {
                        body += notes;
                        if (!body.endsWith(QLatin1Char('\r'))) body += QLatin1Char('\r');
                        notes.clear();
                    }
                }
            } else if (!m.text.isEmpty() && n == m.text) {
                --inText;
            }
        } else if (r.isCharacters() && inText > 0 && !skipping) {
            *out += r.text();
        }
    }
    if (r.hasError()) return {};
    body += notes;
    while (body.endsWith(QLatin1Char('\r')))
        body.chop(1);
    return body;
}

// Line ends of any kind become the carriage return of a word processor's text.
QString paragraphs(QString text) {
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\r"));
    text.replace(QLatin1Char('\n'), QLatin1Char('\r'));
    while (text.endsWith(QLatin1Char('\r')))
        text.chop(1);
    return text;
}

// The converter's view of the binary word-processor format.
QString convertedDoc(const QString& path) {
    struct Converter {
        const char* program;
        QStringList args;
    };
    const Converter converters[] = {
        {"antiword",
         {QStringLiteral("-m"), QStringLiteral("UTF-8.txt"), QStringLiteral("-w"), QStringLiteral("0")}},
        {"catdoc", {QStringLiteral("-d"), QStringLiteral("utf-8"), QStringLiteral("-w")}},
    };
    for (const Converter& c : converters) {
        const QString exe = QStandardPaths::findExecutable(QString::fromLatin1(c.program));
        if (exe.isEmpty()) continue;
        QProcess p;
        p.start(exe, QStringList(c.args) << path);
        if (!p.waitForFinished(30000)) {
            p.kill();
            p.waitForFinished();
            continue;
        }
        if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) continue;
        return paragraphs(QString::fromUtf8(p.readAllStandardOutput()).trimmed());
    }
    return {};
}

// The older binary word-processor format is read here; what this reader does not take (the versions
// before 1997) goes through a converter, when one is installed.
QString binaryDoc(QFile& f) {
    // Pictures make such files large, but past this they are not papers a clerk files.
    constexpr qint64 kMaxBinary = 256ll * 1024 * 1024;
    if (f.size() > kMaxBinary) return {};
    QString text;
    switch (ReadWordBinaryText(f.readAll(), &text)) {
    case WordBinaryResult::Read:
        return text;
    case WordBinaryResult::Encrypted:
        return {};
    case WordBinaryResult::NotWord:
    case WordBinaryResult::Broken:
        break;
    }
    return convertedDoc(f.fileName());
}

bool isZip(const QByteArray& head) {
    return head.startsWith("PK\x03\x04");
}

bool isCompoundFile(const QByteArray& head) {
    return head.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
}

} // namespace

void setDocumentOpener(DocumentOpener o) {
    opener() = std::move(o);
}

bool OpenDocument(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isFile()) return false;
    if (opener()) return opener()(path);
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()));
}

QString DecodePlainText(const QByteArray& bytes) {
    QByteArray b = bytes;
    if (b.startsWith("\xEF\xBB\xBF")) b.remove(0, 3);
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8.decode(b);
    if (!utf8.hasError()) return text;
    QStringDecoder gb("GB18030");
    return gb.isValid() ? QString(gb.decode(b)) : text;
}

QString ReadDocumentText(const QString& path) {
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile()) return {};
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    const QByteArray head = f.peek(8);
    const QString suffix = info.suffix().toLower();

    if (isZip(head)) {
        f.close();
        if (suffix != QLatin1String("odt")) {
            const QByteArray body = readZipMember(path, "word/document.xml");
            if (!body.isEmpty()) return xmlText(body, docxMarkup());
        }
        return xmlText(readZipMember(path, "content.xml"), odtMarkup());
    }
    if (isCompoundFile(head)) return binaryDoc(f);
    if (suffix == QLatin1String("txt") || suffix == QLatin1String("text")) {
        const qint64 size = f.size();
        if (size > qint64(kMaxPart)) return {};
        return paragraphs(DecodePlainText(f.readAll()));
    }
    return {};
}

} // namespace zq
