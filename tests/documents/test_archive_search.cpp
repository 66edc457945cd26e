#include "TestDb.h"
#include "ZipFiles.h"

#include "documents/ArchiveData.h"
#include "shell/Connection.h"
#include "shell/Schema.h"
#include "shell/TextSearch.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

using namespace zq;

namespace {

void addDocument(const QString& code, const QString& name, const QString& contents, const QString& path = {},
                 int picture = 0) {
    test::exec(
        QStringLiteral("insert into tWd_File1 (fCode,fName,fYnxj,fBz,fFilePath,fBmCode,fDetail1,fLimited) "
                       "values (?,?,1,?,?,'',?,0)"),
        {code, name, picture, path, contents});
}

QStringList codesOf(const QVector<SearchHit>& hits) {
    QStringList codes;
    for (const SearchHit& h : hits)
        codes << h.code;
    return codes;
}

QStringList found(const QString& query, const QString& classCode = {}) {
    return codesOf(FindInArchive(query, classCode));
}

} // namespace

class TestArchiveSearch : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private slots:
    void init() { test::freshDatabase(); }

    void chineseIsIndexedInPairs() {
        QCOMPARE(SearchTokens(QStringLiteral("员工手册")),
                 QStringList({QStringLiteral("员工"), QStringLiteral("工手"), QStringLiteral("手册")}));
        QCOMPARE(SearchTokens(QStringLiteral("图纸ZQ-001号, Ab")),
                 QStringList({QStringLiteral("图纸"), QStringLiteral("zq"), QStringLiteral("001"),
                              QStringLiteral("号"), QStringLiteral("ab")}));
        QVERIFY(SearchTokens(QStringLiteral(" ,.;！")).isEmpty());
    }

    void findsWordsInNamesContentsAndFiles() {
        test::writeFile(path(QStringLiteral("finance.txt")),
                        QStringLiteral("财务管理规定\n费用报销须经部门经理签字。\n").toUtf8());
        test::writeZip(
            path(QStringLiteral("safety.docx")),
            {{"[Content_Types].xml", "<Types/>"},
             {"word/document.xml",
              "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\">"
              "<w:body><w:p><w:r><w:t>安全生产责任制</w:t></w:r></w:p></w:body></w:document>"}});
        test::writeFile(path(QStringLiteral("yard.jpg")), "not read for words: 报销");
        Transaction t(conn());
        IndexArchiveEntry(QStringLiteral("0101001"), QStringLiteral("员工手册"), true,
                          QStringLiteral("第一章 招聘与录用\r\n新员工试用期为三个月。"), {}, false);
        IndexArchiveEntry(QStringLiteral("0101002"), QStringLiteral("财务制度"), true, {},
                          path(QStringLiteral("finance.txt")), false);
        IndexArchiveEntry(QStringLiteral("0201001"), QStringLiteral("安全规程"), true, {},
                          path(QStringLiteral("safety.docx")), false);
        IndexArchiveEntry(QStringLiteral("0201002"), QStringLiteral("产品图纸ZQ-001"), true, {},
                          path(QStringLiteral("yard.jpg")), true);
        IndexArchiveEntry(QStringLiteral("02"), QStringLiteral("技术文件"), false, QStringLiteral("试用期"),
                          {}, false);
        // An older binary document, as another maker's word processor wrote it.
        IndexArchiveEntry(QStringLiteral("0201003"), QStringLiteral("调动通知"), true, {},
                          QStringLiteral(ZQ_TEST_FILES "/rev.doc"), false);
        t.commit();

        QCOMPARE(found(QStringLiteral("试用期")), QStringList{QStringLiteral("0101001")});
        const SearchHit hit = FindInArchive(QStringLiteral("试用期")).value(0);
        QCOMPARE(hit.name, QStringLiteral("员工手册"));
        QCOMPARE(hit.line, QStringLiteral("新员工试用期为三个月。"));
        // From a linked text file and a word-processor file; a picture's bytes are not words.
        QCOMPARE(found(QStringLiteral("报销")), QStringList{QStringLiteral("0101002")});
        QCOMPARE(FindInArchive(QStringLiteral("报销")).value(0).line,
                 QStringLiteral("费用报销须经部门经理签字。"));
        QCOMPARE(found(QStringLiteral("安全生产")), QStringList{QStringLiteral("0201001")});
        // Characters outside the basic plane are words too; what the writer deleted is not.
        QCOMPARE(found(QStringLiteral("𠀀𪚥")), QStringList{QStringLiteral("0201003")});
        QCOMPARE(found(QStringLiteral("通知𠀀")), QStringList{QStringLiteral("0201003")});
        QVERIFY(found(QStringLiteral("旧句子")).isEmpty());
        QCOMPARE(found(QStringLiteral("公司网站")), QStringList{QStringLiteral("0201003")});
        // Latin words by their start, whatever the case and the punctuation.
        QCOMPARE(found(QStringLiteral("zq-001")), QStringList{QStringLiteral("0201002")});
        QCOMPARE(found(QStringLiteral("Z")), QStringList{QStringLiteral("0201002")});
        // A lone character, words inside longer ones, every word of several.
        QCOMPARE(found(QStringLiteral("册")), QStringList{QStringLiteral("0101001")});
        QCOMPARE(found(QStringLiteral("用期为")), QStringList{QStringLiteral("0101001")});
        QCOMPARE(found(QStringLiteral("招聘  三个月")), QStringList{QStringLiteral("0101001")});
        QVERIFY(found(QStringLiteral("招聘 报销")).isEmpty());
        QVERIFY(found(QStringLiteral("期试")).isEmpty());
        QCOMPARE(found(QStringLiteral("制"), QStringLiteral("02")), QStringList{QStringLiteral("0201001")});
        QCOMPARE(found(QStringLiteral("制")),
                 QStringList({QStringLiteral("0101002"), QStringLiteral("0201001")}));
        // Punctuation alone, quotes and the pattern characters find nothing and break nothing.
        QVERIFY(found(QStringLiteral("，。!")).isEmpty());
        QVERIFY(found(QStringLiteral("'; drop table tWd_File1; --")).isEmpty());
        QVERIFY(found(QStringLiteral("%")).isEmpty());
        QVERIFY(found(QStringLiteral("\"试用")).contains(QStringLiteral("0101001")));
    }

    void indexFollowsChangesAndRebuilds() {
        addDocument(QStringLiteral("0101"), QStringLiteral("考勤制度"), QStringLiteral("迟到三次记旷工半天"));
        addDocument(QStringLiteral("0102"), QStringLiteral("请假制度"), QStringLiteral("病假须附医院证明"));
        // Stored rows are indexed when the index is built, as an upgrade builds it.
        QCOMPARE(ReindexArchive(false), 2);
        QCOMPARE(found(QStringLiteral("旷工")), QStringList{QStringLiteral("0101")});
        {
            Transaction t(conn());
            IndexArchiveEntry(QStringLiteral("0101"), QStringLiteral("考勤制度"), true,
                              QStringLiteral("打卡"), {}, false);
            UnindexDocument(ArchiveTable(), QStringLiteral("0102"));
            t.commit();
        }
        QVERIFY(found(QStringLiteral("旷工")).isEmpty());
        QCOMPARE(found(QStringLiteral("打卡")), QStringList{QStringLiteral("0101")});
        QVERIFY(found(QStringLiteral("病假")).isEmpty());
        // A rolled-back save leaves the index as it was.
        {
            Transaction t(conn());
            IndexArchiveEntry(QStringLiteral("0101"), QStringLiteral("考勤制度"), true,
                              QStringLiteral("加班"), {}, false);
        }
        QCOMPARE(found(QStringLiteral("打卡")), QStringList{QStringLiteral("0101")});
        QVERIFY(found(QStringLiteral("加班")).isEmpty());
    }

    void veryLongWordsAreStoredAndSearched() {
        // A word past the server's limit for one indexed word (2 KB) is kept by its first part; the
        // paper saves, and a search for the whole word or its start finds it without an error.
        const QString word = QString(3000, QLatin1Char('x')) + QStringLiteral("𠀀");
        {
            Transaction t(conn());
            IndexArchiveEntry(QStringLiteral("0301"), QStringLiteral("长词"), true,
                              QStringLiteral("开头 ") + word + QStringLiteral(" 结尾"), {}, false);
            t.commit();
        }
        QCOMPARE(found(word), QStringList{QStringLiteral("0301")});
        QCOMPARE(found(word.left(500)), QStringList{QStringLiteral("0301")});
        QCOMPARE(found(QString(3000, QChar(u'z'))), QStringList());
        QCOMPARE(found(QStringLiteral("结尾")), QStringList{QStringLiteral("0301")});
    }

    void matchingLineIsCutAroundTheWord() {
        const QString long_ =
            QString(100, QChar(u'甲')) + QStringLiteral("关键") + QString(100, QChar(u'乙'));
        const QString line = MatchingLine(QStringLiteral("标题\n") + long_, {QStringLiteral("关键")}, 30);
        QVERIFY(line.contains(QStringLiteral("关键")));
        QVERIFY(line.startsWith(QStringLiteral("…")) && line.endsWith(QStringLiteral("…")));
        QCOMPARE(MatchingLine(QStringLiteral("标题\n正文"), {QStringLiteral("无")}), QStringLiteral("标题"));
    }
};

ZQ_DB_TEST_MAIN(TestArchiveSearch)
#include "test_archive_search.moc"
