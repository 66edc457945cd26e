#pragma once

// Spreadsheets written by a program that is not ours: a Python script using openpyxl, run as its
// own process. A machine without it fails the test (scripts/setup.sh installs it).

#include <QFile>
#include <QProcess>
#include <QString>
#include <QTest>

namespace zq::test {

// Runs `script` (Python 3 text) with `args`; QVERIFY-fails on any error, with the script's words.
inline void runPython(const QString& dir, const QByteArray& script, const QStringList& args = {}) {
    const QString path = dir + QStringLiteral("/make.py");
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(script);
    f.close();
    QProcess p;
    // The system's interpreter, where Debian's openpyxl is installed.
    p.start(QStringLiteral("/usr/bin/python3"), QStringList{path} + args);
    QVERIFY2(p.waitForFinished(120000), "python3 did not finish");
    QVERIFY2(p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0,
             qPrintable(QStringLiteral("python3 failed (install python3-openpyxl through scripts/setup.sh): ") +
                        QString::fromUtf8(p.readAllStandardError())));
}

} // namespace zq::test
