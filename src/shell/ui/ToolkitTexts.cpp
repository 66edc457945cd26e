#include "ToolkitTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace zq {

namespace {
struct Installed {
    int language = -1;
    std::unique_ptr<QTranslator> translator;
};

Installed& installed() {
    static Installed i;
    return i;
}
} // namespace

QString ToolkitTextsFolder() {
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
}

bool InstallToolkitTexts(qint16 language) {
    Installed& in = installed();
    const int wanted = language == 1 ? 1 : 0;
    if (in.language == wanted && in.translator) return true;
    if (!QCoreApplication::instance()) return false;
    const QLocale locale(QLocale::Chinese,
                         wanted == 1 ? QLocale::TraditionalChineseScript : QLocale::SimplifiedChineseScript,
                         wanted == 1 ? QLocale::Taiwan : QLocale::China);
    QLocale::setDefault(locale);
    // "qt" pulls in the toolkit's modules the program uses (base, and what the package holds).
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(locale, QStringLiteral("qt"), QStringLiteral("_"), ToolkitTextsFolder()) &&
        !translator->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"), ToolkitTextsFolder()))
        return false;
    if (in.translator) QCoreApplication::removeTranslator(in.translator.get());
    QCoreApplication::installTranslator(translator.get());
    in.translator = std::move(translator);
    in.language = wanted;
    return true;
}

} // namespace zq
