#include "ComboLookups.h"

#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFontMetrics>
#include <QStyle>

namespace zq {

namespace {
const char* const kHeld = "zqHeldValue";

// A filled list starts with no entry chosen and nothing held.
void chooseNone(QComboBox* combo) {
    combo->setCurrentIndex(-1);
    combo->setProperty(kHeld, QString());
    combo->setPlaceholderText(QString());
}

QString item(const Recordset& rs, bool withCode) {
    return withCode ? rs.text(0) + QLatin1Char('\t') + rs.text(1) : rs.text(1);
}
} // namespace

void FillBriefCombo(QComboBox* combo, const QString& briefType, quint8& withCode) {
    Recordset rs(conn(), QStringLiteral("select * from briefDetail where briefType=") + quoted(briefType) +
                             QStringLiteral(" Order By briefcode"));
    for (; !rs.eof(); rs.moveNext()) {
        const QString name = rs.text(QStringLiteral("BriefName"));
        combo->addItem(withCode != 0 ? rs.text(QStringLiteral("BriefCode")) + QLatin1Char('\t') + name
                                     : name);
    }
    chooseNone(combo);
}

void FillCodeCombo(const QString& table, QComboBox* combo, const QString& prefix, qint16 level,
                   qint16 withCode) {
    combo->clear();
    QString sql = QStringLiteral("select fcode,fname from ") + table + QStringLiteral(" Where 1=1");
    if (level != -1) sql += QStringLiteral(" And fynxj=") + QString::number(level);
    if (!prefix.isEmpty()) sql += QStringLiteral(" And fcode like ") + quoted(prefix + QLatin1Char('%'));
    sql += QStringLiteral(" Order By ") +
           conn().dialect().listOrder(QStringLiteral("fCode"), level == -1 && prefix.isEmpty());
    Recordset rs(conn(), sql);
    for (; !rs.eof(); rs.moveNext())
        combo->addItem(item(rs, withCode != 0));
    chooseNone(combo);
}

void FillUnitCombo(QComboBox* combo) {
    combo->clear();
    Recordset rs(conn(), QStringLiteral("select distinct funit from trsbasic Order By funit"));
    for (; !rs.eof(); rs.moveNext())
        combo->addItem(rs.text(0));
    chooseNone(combo);
}

void ShowWholeNames(QComboBox* combo) {
    QAbstractItemView* list = combo->view();
    list->setTextElideMode(Qt::ElideNone);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    const QFontMetrics fm(list->font());
    int widest = 0;
    for (int i = 0; i < combo->count(); ++i)
        widest = qMax(widest, fm.horizontalAdvance(combo->itemText(i)));
    // Room for the list's frame and its scroll bar beside the longest name.
    list->setMinimumWidth(widest + 2 * list->frameWidth() +
                          list->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 16);
    // An editable box would shrink below its longest name in a layout; up to a sane width it may not.
    combo->setMinimumWidth(qMin(combo->sizeHint().width(), 480));
}

int ComboIndexOf(const QComboBox* combo, const QString& text) {
    for (int i = 0; i < combo->count(); ++i)
        if (combo->itemText(i) == text) return i;
    return -1;
}

void ShowComboValue(QComboBox* combo, const QString& value) {
    const int i = ComboIndexOf(combo, value);
    combo->setCurrentIndex(i);
    const QString held = i < 0 ? value : QString();
    combo->setProperty(kHeld, held);
    combo->setPlaceholderText(held);
}

QString ComboValue(const QComboBox* combo) {
    if (combo->isEditable() || combo->currentIndex() >= 0) return combo->currentText();
    return combo->property(kHeld).toString();
}

} // namespace zq
