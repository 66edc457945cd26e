#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/ui/Components.h"
#include "shell/ui/ToolkitTexts.h"
#include "shell/ui/WidgetPrompts.h"
#include "shell/ui/zqRs.h"

#include <functional>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace zq;

namespace {
// Acts on the next modal window as soon as its loop runs, so no test waits for a person.
void onModal(std::function<void(QWidget*)> act) {
    auto* timer = new QTimer;
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        if (QWidget* w = QApplication::activeModalWidget()) {
            timer->stop();
            timer->deleteLater();
            QPointer<QWidget> guard = w;
            act(w);
            // A failed check inside act must not leave the window waiting for a person.
            if (auto* d = qobject_cast<QDialog*>(guard.data()); d && d->isVisible()) d->reject();
        }
    });
    timer->start();
}

QPushButton* buttonCaptioned(QWidget* box, const QString& caption) {
    for (QPushButton* b : box->findChildren<QPushButton*>())
        if (b->text() == caption) return b;
    return nullptr;
}
} // namespace

class TestPrompts : public QObject {
    Q_OBJECT
private slots:
    void cleanup() {
        installPrompts(nullptr);
        setPromptProvider({});
    }

    void scriptedAnswersQueueThenFirstButton() {
        ScriptedPrompts& p = scriptPrompts();
        p.answer(vbNo);
        QCOMPARE(ShowMsg("删除吗?", 36, "人事管理"), int(vbNo));
        QCOMPARE(ShowMsg("再删除吗?", 36, "人事管理"), int(vbYes)); // queue empty: first button
        QCOMPARE(ShowMsg("存盘错误!", 48, "人事管理"), int(vbOK));
        QCOMPARE(ShowMsg("x", vbRetryCancel), int(vbRetry));
        QCOMPARE(ShowMsg("x", vbYesNoCancel + vbDefaultButton2), int(vbYes));

        QCOMPARE(p.shown().size(), 5);
        const ScriptedPrompts::Shown& s = p.shown()[0];
        QCOMPARE(s.kind, ScriptedPrompts::Kind::Message);
        QCOMPARE(s.text, QString("删除吗?"));
        QCOMPARE(s.style, 36);
        QCOMPARE(s.title, QString("人事管理"));
        QCOMPARE(s.answer, QString::number(vbNo));
        QCOMPARE(p.messages().value(2), QString("存盘错误!"));
    }

    void emptyTitleIsTheApplicationTitle() {
        ScriptedPrompts& p = scriptPrompts();
        G().AppTitle = "人事管理系统";
        ShowMsg("未有可供打印的数据记录！", 64, "");
        InputBox("Please input the Model password !");
        QCOMPARE(p.shown()[0].title, QString("人事管理系统"));
        QCOMPARE(p.shown()[1].title, QString("人事管理系统"));
    }

    void scriptedInputFileAndPrinter() {
        ScriptedPrompts& p = scriptPrompts();
        p.answerInput(std::nullopt);
        p.answerInput(QString("abc"));
        QCOMPARE(InputBox("密码", "t", "d"), std::optional<QString>());
        QCOMPARE(InputBox("密码", "t", "d"), std::optional<QString>("abc"));
        QCOMPARE(InputBox("密码", "t", "d"), std::optional<QString>("d"));
        QCOMPARE(p.shown()[0].kind, ScriptedPrompts::Kind::Input);
        QCOMPARE(p.shown()[0].text, QString("密码"));

        FileRequest r;
        r.title = "选择文档文件";
        r.filter = "文本文件 (.Txt) |*.txt";
        r.flags = 4100;
        p.answerFile("/tmp/a.txt");
        QCOMPARE(prompts().file(r), QString("/tmp/a.txt"));
        QCOMPARE(prompts().file(r), QString()); // nothing queued: cancelled
        QCOMPARE(p.shown()[3].title, QString("选择文档文件"));
        QCOMPARE(p.shown()[3].style, 4100);

        QString printer = "A";
        QVERIFY(prompts().choosePrinter(printer));
        QCOMPARE(printer, QString("A"));
        p.answerPrinter(std::nullopt);
        QVERIFY(!prompts().choosePrinter(printer));
        p.answerPrinter(QString("B"));
        QVERIFY(prompts().choosePrinter(printer));
        QCOMPARE(printer, QString("B"));
    }

    void fileFiltersTurnIntoDialogFilters() {
        QCOMPARE(
            fileFilters("Word 文挡文件 (.Doc) |*.doc|文本文件 (.Txt) |*.txt|所有文件 (*.*) |*.*"),
            QStringList({"Word 文挡文件 (.Doc) (*.doc)", "文本文件 (.Txt) (*.txt)", "所有文件 (*.*) (*.*)"}));
        QCOMPARE(fileFilters("图片|*.jpg;*.bmp"), QStringList({"图片 (*.jpg *.bmp)"}));
        QCOMPARE(fileFilters(""), QStringList());
    }

    void installedServiceWinsOverTheControls() {
        installPrompts(nullptr);
        {
            zqRs control;
            QVERIFY(dynamic_cast<WidgetPrompts*>(&prompts()));
            QVERIFY(Components::exists());
            Components::release();
            QVERIFY(!Components::exists());
            QVERIFY(dynamic_cast<WidgetPrompts*>(&prompts())); // touched again: a new holder
        }
        ScriptedPrompts& p = scriptPrompts();
        zqRs control;
        QCOMPARE(&prompts(), static_cast<Prompts*>(&p));
        Components::release();
    }

    void withoutAnyServiceNothingBlocks() { QCOMPARE(ShowMsg("x", 36), int(vbYes)); }

    void messageBoxGivesTheButtonPressed() {
        WidgetPrompts w;
        onModal([](QWidget* box) {
            QVERIFY(qobject_cast<QMessageBox*>(box));
            QCOMPARE(box->windowTitle(), QString("人事管理"));
            QCOMPARE(box->font().family(), QString("WenQuanYi Zen Hei"));
            QCOMPARE(qobject_cast<QMessageBox*>(box)->icon(), QMessageBox::Question);
            QPushButton* no = buttonCaptioned(box, "否(&N)");
            QVERIFY(no);
            no->click();
        });
        QCOMPARE(w.message("是否删除?", 36, "人事管理"), int(vbNo));

        onModal([](QWidget* box) {
            auto* mb = qobject_cast<QMessageBox*>(box);
            QCOMPARE(mb->defaultButton()->text(), QString("取消"));
            QTest::keyClick(box, Qt::Key_Escape);
        });
        QCOMPARE(w.message("继续?", vbOKCancel + vbDefaultButton2, "t"), int(vbCancel));

        // Closing a question without an answer is "No", never "Yes".
        onModal([](QWidget* box) { qobject_cast<QDialog*>(box)->reject(); });
        QCOMPARE(w.message("是否删除?", 36, "t"), int(vbNo));

        onModal([](QWidget* box) { QTest::keyClick(box, Qt::Key_Return); });
        QCOMPARE(w.message("已存盘", 64, "t"), int(vbOK));
    }

    void messageBoxHasRoomForItsTitle() {
        WidgetPrompts w;
        const QString title = QStringLiteral("借领用工具设备 - 物品归还登记");
        int width = 0;
        int titleWidth = 0;
        onModal([&](QWidget* box) {
            width = box->width();
            titleWidth = box->fontMetrics().horizontalAdvance(title);
            box->close();
        });
        w.message(QStringLiteral("存盘完毕!"), vbInformation, title);
        QVERIFY2(width > titleWidth, qPrintable(QString("box %1, title %2").arg(width).arg(titleWidth)));
    }

    // The toolkit's dialogs in Chinese, starting in the user's documents or where he was last.
    void fileDialogsSpeakChineseAndStartWhereTheUserWorks() {
        QVERIFY2(InstallToolkitTexts(0), qPrintable(ToolkitTextsFolder()));
        ForgetLastFolder();
        QTemporaryDir home;
        qputenv("HOME", home.path().toUtf8());
        QStandardPaths::setTestModeEnabled(false);
        QDir(home.path()).mkpath(QStringLiteral("Documents"));
        QDir(home.path()).mkpath(QStringLiteral("照片"));
        const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        QCOMPARE(StartFolder(), documents);

        FileRequest save;
        save.mode = FileRequest::Save;
        save.title = QStringLiteral("保存图片");
        save.filter = QStringLiteral("PNG 图片|*.png");
        save.fileName = QStringLiteral("性别.png"); // a bare name: no folder of its own
        auto dlg = MakeFileDialog(save, nullptr);
        QCOMPARE(dlg->acceptMode(), QFileDialog::AcceptSave);
        QCOMPARE(QDir(dlg->directory()).absolutePath(), QDir(documents).absolutePath());
        const auto* box = dlg->findChild<QDialogButtonBox*>();
        QVERIFY(box);
        const QString accept = box->button(QDialogButtonBox::Save)
                                   ? box->button(QDialogButtonBox::Save)->text()
                                   : box->buttons().value(0)->text();
        QVERIFY2(accept.contains(QStringLiteral("保存")), qPrintable(accept));
        QStringList captions;
        for (const QLabel* l : dlg->findChildren<QLabel*>())
            captions << l->text();
        QVERIFY2(!captions.join(' ').contains(QStringLiteral("Look in")), qPrintable(captions.join('|')));
        QVERIFY2(!captions.join(' ').contains(QStringLiteral("File name")), qPrintable(captions.join('|')));

        // A file chosen in one folder: the next dialog without a folder of its own opens there.
        const QString photos = home.path() + QStringLiteral("/照片");
        FileRequest open;
        open.title = QStringLiteral("照片文件");
        open.fileName = photos + QStringLiteral("/a.jpg");
        dlg = MakeFileDialog(open, nullptr);
        QCOMPARE(QDir(dlg->directory()).absolutePath(), photos);
        dlg->selectFile(photos + QStringLiteral("/a.jpg"));
        static_cast<QDialog*>(dlg.get())->accept(); // as the user accepting it
        QCOMPARE(StartFolder(), photos);
        dlg = MakeFileDialog(save, nullptr);
        QCOMPARE(QDir(dlg->directory()).absolutePath(), photos);
        ForgetLastFolder();
    }

    void inputBoxGivesTextOrCancel() {
        WidgetPrompts w;
        onModal([](QWidget* d) {
            auto* dlg = qobject_cast<QInputDialog*>(d);
            QVERIFY(dlg);
            QCOMPARE(dlg->textValue(), QString("旧"));
            dlg->setTextValue("新值");
            dlg->accept();
        });
        QCOMPARE(w.input("请输入", "t", "旧"), std::optional<QString>("新值"));
        onModal([](QWidget* d) { qobject_cast<QDialog*>(d)->reject(); });
        QCOMPARE(w.input("请输入", "t", "旧"), std::optional<QString>());
    }
};

QTEST_MAIN(TestPrompts)
#include "test_prompts.moc"
