#include "resources/Texts.h"
#include "shell/Globals.h"

#include <QTest>
#include <stdexcept>

using namespace zq;

class TestTexts : public QObject {
    Q_OBJECT
private slots:
    void languageOffset() {
        G().Language = 0;
        QCOMPARE(LoadText(99), QString("人事管理系统"));
        QCOMPARE(LoadText(148), QString("未有可供打印的数据记录！"));
        QCOMPARE(LoadText(0), QString("0"));
        G().Language = 1;
        QCOMPARE(LoadText(99), QString("Zenqo Human Resource System"));
        QCOMPARE(LoadText(148), QString("未有可打印的數据!"));
        QCOMPARE(LoadText(0), QString("1"));
        QCOMPARE(LoadText(163), QString("電話"));
        G().Language = 0;
    }

    void missingIdsAreErrors() {
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, LoadText(98));
        G().Language = 2;
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, LoadText(99));
        G().Language = 0;
    }

    void bothHalvesComplete() {
        for (int id = 0; id <= 217; ++id)
            QCOMPARE(hasText(id), hasText(id + 10000));
        QVERIFY(hasText(144) && hasText(174) && hasText(94));
    }
};

QTEST_MAIN(TestTexts)
#include "test_texts.moc"
