#include "zqRs.h"

#include "Commands.h"
#include "Components.h"
#include "Fonts.h"
#include "Login.h"
#include "PropertyBag.h"
#include "resources/Texts.h"
#include "services/Lookups.h"
#include "shell/Company.h"
#include "shell/Connection.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Schema.h"
#include "ToolkitTexts.h"
#include "WidgetPrompts.h"

#include <variant>
#include <vector>

using zq::G;

namespace {
const QString kNoPower = QString(350, QLatin1Char('0'));
}

zqRs::zqRs(QWidget* parent)
    : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedSize(0, 0);
    zq::installFontSubstitutes();
    zq::setPromptProvider([]() -> zq::Prompts* { return &zq::Components::instance().prompts(); });
    zq::installLoginWindow();
}

zqRs::~zqRs() {
    Terminate();
}

namespace {
using Text = QString zq::Globals::*;
using Number = qint16 zq::Globals::*;

struct BagProperty {
    const char* readKey;
    const char* writeKey; // nullptr: read only
    std::variant<Text, Number> member;
    QVariant readDefault; // also what a write compares against
    QVariant initial;     // after InitProperties
};

// The properties kept in the host's bag, in the order they have always been read and written.
// AccName is read but never written, and "Showmode" keeps the case it was always written with.
const std::vector<BagProperty>& bagProperties() {
    const QString none;
    static const std::vector<BagProperty> p = {
        {"accName", nullptr, &zq::Globals::AccName, QStringLiteral("Zenqo SoftWare"), none},
        {"UserName", "UserName", &zq::Globals::UserName, none, none},
        {"ZgName", "ZgName", &zq::Globals::ZgName, none, none},
        {"myPower", "myPower", &zq::Globals::myPower, kNoPower, kNoPower},
        {"Language", "Language", &zq::Globals::Language, 0, 0},
        {"myModel", "myModel", &zq::Globals::myModel, none, none},
        {"showmode", "Showmode", &zq::Globals::showmode, 0, 0},
        {"UserPath", "UserPath", &zq::Globals::UserPath, none, none},
        {"Password", "Password", &zq::Globals::Password, none, none},
        {"SQLData", "SQLData", &zq::Globals::SQLData, 0, 0},
        {"UserID", "UserID", &zq::Globals::UserID, none, none},
        {"Default", "Default", &zq::Globals::Default, none, none},
    };
    return p;
}

void assign(const BagProperty& p, const QVariant& v) {
    if (const Text* text = std::get_if<Text>(&p.member))
        G().*(*text) = v.toString();
    else
        G().*std::get<Number>(p.member) = qint16(v.toInt());
}

QVariant current(const BagProperty& p) {
    if (const Text* text = std::get_if<Text>(&p.member)) return G().*(*text);
    return int(G().*std::get<Number>(p.member));
}
} // namespace

void zqRs::InitProperties() {
    for (const BagProperty& p : bagProperties())
        assign(p, p.initial);
}

void zqRs::ReadProperties(const zq::PropertyBag& bag) {
    for (const BagProperty& p : bagProperties())
        assign(p, bag.ReadProperty(QLatin1String(p.readKey), p.readDefault));
}

void zqRs::WriteProperties(zq::PropertyBag& bag) const {
    for (const BagProperty& p : bagProperties())
        if (p.writeKey) bag.WriteProperty(QLatin1String(p.writeKey), current(p), p.readDefault);
}

void zqRs::Terminate() {
    if (zq::conn().isOpen()) zq::conn().close();
}

void zqRs::Refresh(const QString& mnuModel, qint16 State, const QVariantMap& settings) {
    const QString key = mnuModel.toLower();
    zq::Globals& g = G();
    g.AppTitle = zq::LoadText(99);
    // The toolkit's own dialogs speak the user's language too.
    zq::InstallToolkitTexts(g.Language);
    // An older database is brought to this program's schema before any screen reads it.
    if (zq::OpenConn(g.SQLData, zq::conn(), g.UserPath, g.Password, g.UserID, g.Default) == 1)
        zq::schema::upgradeIfOlder(zq::conn());
    g.DateQuote = zq::conn().isOpen() ? zq::conn().dialect().dateQuote() : QStringLiteral("'");
    const QString deptCode = zq::GetUserDeptCode(g.UserName);
    g.UserDeptCode = g.ZgName == g.UserName ? QString() : deptCode;
    zq::LoadCompany();
    zq::runCommand(key, State, settings);
    if (zq::conn().isOpen()) zq::conn().close();
    zq::Components::release();
}
