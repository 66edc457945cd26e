#include "Texts.h"

#include "shell/Globals.h"

#include <QHash>

namespace zq {

namespace {
struct Pair {
    int id;
    const char* simplified;
    const char* traditional;
};

// clang-format off
const Pair kTexts[] = {
    {9, "公司", "公司"},
    {50, "编号", "編號"},
    {99, "人事管理系统", "人事管理系統"},
    {160, "单位", "單位"},
    {161, "省市地址", "省市地址"},
    {162, "地址", "地址"},
    {163, "电话", "電話"},
    {164, "传真", "傳真"},
    {165, "邮编", "郵編"},
    {166, "电邮", "電郵"},
    {167, "网址", "網址"},
    {168, "税号", "稅號"},
    {169, "帐号", "帳號"},
};
// clang-format on

const QHash<int, const Pair*>& table()
{
    static const QHash<int, const Pair*> t = [] {
        QHash<int, const Pair*> h;
        for (const Pair& p : kTexts)
            h.insert(p.id, &p);
        return h;
    }();
    return t;
}
} // namespace

QString textOf(int id, int language)
{
    const Pair* p = table().value(id, nullptr);
    if (!p)
        return {};
    return QString::fromUtf8(language == 1 ? p->traditional : p->simplified);
}

QString LoadText(int id) { return textOf(id, G().Language); }

} // namespace zq
