#include "services/Documents.h"
#include "services/InputAids.h"
#include "services/WordBinary.h"

#include "ZipFiles.h"

#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace zq;

namespace {

using test::writeFile;
using test::writeZip;

const QByteArray kDocx =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">\n"
    " <w:body>\n"
    "  <w:p><w:r><w:t>人事</w:t></w:r><w:r><w:t xml:space=\"preserve\"> 报告</w:t></w:r></w:p>\n"
    "  <w:p><w:r><w:t>甲</w:t><w:tab/><w:t>乙</w:t><w:br/><w:t>丙</w:t></w:r></w:p>\n"
    "  <w:p/>\n"
    "  <w:p><w:r><w:fldChar w:fldCharType=\"begin\"/><w:instrText>PAGE</w:instrText></w:r>\n"
    "   <w:del><w:r><w:delText>删去的</w:delText></w:r></w:del><w:r><w:t>完</w:t></w:r></w:p>\n"
    "  <w:sectPr/>\n"
    " </w:body>\n"
    "</w:document>";

const QByteArray kOdt =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<office:document-content xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\"\n"
    "  xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"\n"
    "  xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
    " <office:body><office:text>\n"
    "  <text:h text:outline-level=\"1\">会议纪要</text:h>\n"
    "  <text:p>一<text:s "
    "text:c=\"3\"/>二<text:tab/>三<text:span>四</text:span><text:line-break/>五</text:p>\n"
    "  "
    "<text:p>批注<office:annotation><dc:creator>某</dc:creator><text:p>不要</text:p></"
    "office:annotation>之后</text:p>\n"
    " </office:text></office:body>\n"
    "</office:document-content>";

} // namespace

class TestDocuments : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const QString& name) { return m_dir.filePath(name); }
    static QString file(const char* name) { return QStringLiteral(ZQ_TEST_FILES "/") + QLatin1String(name); }
    static QByteArray readFile(const QString& p) {
        QFile f(p);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

private slots:
    void plainTextInUtf8AndGb18030() {
        writeFile(path(QStringLiteral("u.txt")), QStringLiteral("第一行\r\n第二行\n").toUtf8());
        QCOMPARE(ReadDocumentText(path(QStringLiteral("u.txt"))), QStringLiteral("第一行\r第二行"));

        QStringEncoder gb("GB18030");
        QVERIFY(gb.isValid());
        const QByteArray bytes = gb.encode(QStringLiteral("员工调动通知\n张三"));
        QVERIFY(bytes != QStringLiteral("员工调动通知\n张三").toUtf8());
        writeFile(path(QStringLiteral("g.txt")), bytes);
        QCOMPARE(ReadDocumentText(path(QStringLiteral("g.txt"))), QStringLiteral("员工调动通知\r张三"));
        QCOMPARE(DecodePlainText("\xEF\xBB\xBF"
                                 "abc"),
                 QStringLiteral("abc"));
    }

    void wordProcessorDocuments() {
        writeZip(path(QStringLiteral("a.docx")),
                 {{"[Content_Types].xml", "<Types/>"}, {"word/document.xml", kDocx}});
        QCOMPARE(ReadDocumentText(path(QStringLiteral("a.docx"))),
                 QStringLiteral("人事 报告\r甲\t乙\r丙\r\r完"));

        writeZip(path(QStringLiteral("b.odt")),
                 {{"mimetype", "application/vnd.oasis.opendocument.text"}, {"content.xml", kOdt}});
        QCOMPARE(ReadDocumentText(path(QStringLiteral("b.odt"))),
                 QStringLiteral("会议纪要\r一   二\t三四\r五\r批注之后"));

        // The copy into a report cuts at the paragraphs.
        QCOMPARE(ClipTextLines(ReadDocumentText(path(QStringLiteral("a.docx"))), 8),
                 QStringLiteral("人事 报告\r\n甲\t乙\r\n ..."));
    }

    // As a word processor saves them: a text box in alternate content has the same text in both
    // branches, a moved paragraph is kept where it went, a footnote's body sits inside its sentence.
    void textBoxesMovesAndNotesAreReadOnce() {
        writeZip(path(QStringLiteral("box.docx")),
                 {{"word/document.xml",
                   "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\""
                   " xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\""
                   " xmlns:wps=\"http://schemas.microsoft.com/office/word/2010/wordprocessingShape\""
                   " xmlns:v=\"urn:schemas-microsoft-com:vml\"><w:body>"
                   "<w:p><w:r><w:t>正文</w:t></w:r><w:r><mc:AlternateContent><mc:Choice Requires=\"wps\">"
                   "<w:drawing><wps:txbx><w:txbxContent><w:p><w:r><w:t>文本框</w:t></w:r></w:p></w:txbxContent>"
                   "</wps:txbx></w:drawing></mc:Choice><mc:Fallback><w:pict><v:shape><v:textbox><w:txbxContent>"
                   "<w:p><w:r><w:t>文本框</w:t></w:r></w:p></w:txbxContent></v:textbox></v:shape></w:pict>"
                   "</mc:Fallback></mc:AlternateContent></w:r></w:p>"
                   "<w:p><w:moveFrom><w:r><w:t>移走的</w:t></w:r></w:moveFrom><w:r><w:t>留下</w:t></w:r></w:p>"
                   "<w:p><w:moveTo><w:r><w:t>移来的</w:t></w:r></w:moveTo></w:p>"
                   "</w:body></w:document>"}});
        const QString box = ReadDocumentText(path(QStringLiteral("box.docx")));
        QCOMPARE(box.count(QStringLiteral("文本框")), 1);
        QVERIFY2(!box.contains(QStringLiteral("移走的")) && box.contains(QStringLiteral("留下\r移来的")),
                 qPrintable(box));

        writeZip(path(QStringLiteral("note.odt")),
                 {{"content.xml",
                   "<office:document-content xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
                   " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\"><office:body><office:text>"
                   "<text:p>人员调动<text:note text:note-class=\"footnote\"><text:note-citation>1</text:note-citation>"
                   "<text:note-body><text:p>见附件</text:p><text:p>第二段</text:p></text:note-body></text:note>"
                   "通知如下</text:p><text:p>下一段</text:p>"
                   "</office:text></office:body></office:document-content>"}});
        QCOMPARE(ReadDocumentText(path(QStringLiteral("note.odt"))),
                 QStringLiteral("人员调动通知如下\r见附件\r第二段\r下一段"));
    }

    // Binary documents as another maker's word processor writes them (tests/files/make-docs.sh): characters
    // outside the basic plane whole, a deleted revision left out and an inserted one kept, a link's
    // field code out and its text in, table cells and notes as lines.
    void binaryDocumentsFromAnotherWordProcessor() {
        QCOMPARE(ReadDocumentText(file("rev.doc")),
                 QStringLiteral("人员调动通知𠀀𪚥 ABC\r保留的开头保留的结尾新加的\r人员调动通知如下\r链接：公司网站结束\r"
                                "姓名\r部门\r张三\r财务部\rPlain ASCII line – café “quoted” €\r见附件"));
        // Long enough for its character properties to fill many pages, with a deletion near the end
        // and a text box read after the body.
        const QString text = ReadDocumentText(file("long.doc"));
        QCOMPARE(text.count(QStringLiteral("𠀀")), 1000);
        QVERIFY(text.contains(QStringLiteral("Paragraph 1900 of the staff handbook.\r末尾之前之后\r第1901段")));
        QVERIFY(!text.contains(QStringLiteral("删掉")));
        QVERIFY(text.endsWith(QStringLiteral("第1999段 人员档案 𠀀 paragraph 1999\r文本框前文本框后\r框里的字")));
    }

    // The format keeps runs of plain letters one byte a character, in the 1252 code page; the other
    // writer never does, so its file is turned into one that does.
    void binaryDocumentsWithOneByteText() {
        QByteArray doc = readFile(file("ascii.doc"));
        const QString line = QStringLiteral("Only plain letters here, nothing else.");
        const QByteArray wide(reinterpret_cast<const char*>(line.utf16()), line.size() * 2);
        const qsizetype text = doc.indexOf(wide);
        QVERIFY(text > 0 && text % 512 == 0);
        // The one piece of its table (characters 0 to 52), two-byte and at offset 2048 of its stream.
        const QByteArray piece = QByteArray::fromHex("02100000000000000034000000");
        const qsizetype table = doc.indexOf(piece);
        QVERIFY(table > 0);
        const qsizetype fc = table + piece.size() + 2;
        QCOMPARE(qFromLittleEndian<quint32>(doc.constData() + fc), 2048u);
        qToLittleEndian<quint32>((2048u * 2) | 0x40000000u, doc.data() + fc);
        const QByteArray narrow = "Only \x80 letters, \x93quoted\x94 and caf\xE9 all.\rSecond line.\r";
        doc.replace(text, narrow.size(), narrow);
        writeFile(path(QStringLiteral("narrow.doc")), doc);
        QCOMPARE(ReadDocumentText(path(QStringLiteral("narrow.doc"))),
                 QStringLiteral("Only € letters, “quoted” and café all.\rSecond line."));
    }

    // A file protected by a password has no text to give; a cut one gives none rather than garbage.
    void binaryDocumentsLockedOrCut() {
        QByteArray doc = readFile(file("rev.doc"));
        qsizetype stream = 0;
        while ((stream = doc.indexOf("\xEC\xA5", stream + 1)) > 0 && stream % 512 != 0) {
        }
        QVERIFY(stream > 0);
        writeFile(path(QStringLiteral("cut.doc")), doc.left(stream + 1024));
        QCOMPARE(ReadDocumentText(path(QStringLiteral("cut.doc"))), QString());
        QByteArray locked = doc;
        locked[stream + 0x0B] = char(locked[stream + 0x0B] | 0x01); // the flag "encrypted"
        writeFile(path(QStringLiteral("locked.doc")), locked);
        QCOMPARE(ReadDocumentText(path(QStringLiteral("locked.doc"))), QString());

        // Damage anywhere reads as nothing or as some text, never past the file (the sanitizer
        // build runs this too).
        quint32 seed = 1;
        const auto next = [&seed] { return seed = seed * 1664525u + 1013904223u; };
        for (const char* name : {"rev.doc", "long.doc"}) {
            const QByteArray original = readFile(file(name));
            for (int round = 0; round < 400; ++round) {
                QByteArray damaged = original;
                // Mostly where the file's structures are: its first sectors.
                for (int i = 0; i < 8; ++i) {
                    const quint32 span = i % 2 ? quint32(damaged.size()) : qMin(12288u, quint32(damaged.size()));
                    damaged[qsizetype(next() % span)] = char(next() >> 24);
                }
                QString text;
                ReadWordBinaryText(damaged, &text);
            }
        }
    }

    void unreadableGivesNothing() {
        QCOMPARE(ReadDocumentText(path(QStringLiteral("missing.docx"))), QString());
        QCOMPARE(ReadDocumentText(QString()), QString());
        writeFile(path(QStringLiteral("broken.docx")), QByteArray("PK\x03\x04 not really a zip"));
        QCOMPARE(ReadDocumentText(path(QStringLiteral("broken.docx"))), QString());
        writeZip(path(QStringLiteral("bad.docx")), {{"word/document.xml", "<w:document><unclosed>"}});
        QCOMPARE(ReadDocumentText(path(QStringLiteral("bad.docx"))), QString());
        writeFile(path(QStringLiteral("x.pdf")), "%PDF-1.4 binary");
        QCOMPARE(ReadDocumentText(path(QStringLiteral("x.pdf"))), QString());
        // An old binary document the converter cannot make sense of.
        writeFile(path(QStringLiteral("junk.doc")),
                  QByteArray("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + QByteArray(600, '\0'));
        QCOMPARE(ReadDocumentText(path(QStringLiteral("junk.doc"))), QString());
    }

    void openingGoesToTheInstalledOpener() {
        QStringList opened;
        setDocumentOpener([&](const QString& p) {
            opened << p;
            return true;
        });
        writeFile(path(QStringLiteral("o.txt")), "x");
        QVERIFY(OpenDocument(path(QStringLiteral("o.txt"))));
        QVERIFY(!OpenDocument(path(QStringLiteral("gone.txt"))));
        QVERIFY(!OpenDocument(QString()));
        QCOMPARE(opened, QStringList({path(QStringLiteral("o.txt"))}));
        setDocumentOpener({});
    }
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    TestDocuments tc;
    return QTest::qExec(&tc, argc, argv);
}
#include "test_documents.moc"
