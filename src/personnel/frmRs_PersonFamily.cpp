#include "frmRs_PersonFamily.h"

#include "PersonRecordsData.h"
#include "printing/Print.h"
#include "services/FieldDictionary.h"
#include "services/ui/Grid.h"
#include "services/ui/GridExport.h"
#include "services/ui/GridBinding.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace zq {

namespace {
const char* const kSpouseCaptions[10] = {"姓 名", "出生日期", "政治面貌",   "民 族", "籍 贯",
                                         "电 话", "文化程度", "户籍所在地", "职 务", "工作单位"};
} // namespace

frmRs_PersonFamily::frmRs_PersonFamily(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("家庭情况"), parent, QStringLiteral("cmdQuit"),
                         QStringLiteral("Command5"))
    , m_title0(new QLabel(QStringLiteral("配偶情况"), this))
    , m_marryInform(new QLabel(this))
    , m_grid2(new ZqGrid(this)) {
    setObjectName(QStringLiteral("frmRs_PersonFamily"));
    EnableGridExport(m_grid2, [this] { return m_title0->text(); });
    addGrid(SubGrid(QStringLiteral("tRsfamily"), QStringLiteral("fch,fName,fny,fdw,fZz"), {},
                    {{"fCh", QStringLiteral("称呼"), 5, 10},
                     {"fName", QStringLiteral("姓名"), 11, 10},
                     {"fNy", QStringLiteral("出生年月"), 10, 12},
                     {"fDw", QStringLiteral("工作单位、职务或住址"), 20.85, 60},
                     {"fZz", QStringLiteral("政治面貌"), 9, 10}},
                    false, QStringLiteral("员工家庭成员")),
            QStringLiteral("Grid1"), QStringLiteral("Label1(4)"));

    // The spouse block: ten captions with their boxes, two pairs a line.
    m_title0->setObjectName(QStringLiteral("Label1(0)"));
    m_marryInform->setObjectName(QStringLiteral("lblMarryInform"));
    auto* heading = new QHBoxLayout;
    heading->addWidget(m_title0);
    heading->addWidget(m_marryInform);
    heading->addStretch();
    body()->addLayout(heading);
    auto* block = new QGridLayout;
    for (int i = 0; i < 10; ++i) {
        m_lblName[i] = new QLabel(QString::fromUtf8(kSpouseCaptions[i]), this);
        m_lblName[i]->setObjectName(QStringLiteral("lblName(%1)").arg(i));
        m_lblName[i]->installEventFilter(this);
        m_lblName[i]->setToolTip(QStringLiteral("双击选择，右键修改标题"));
        m_txtName[i] = new QLineEdit(this);
        m_txtName[i]->setObjectName(QStringLiteral("TxtName(%1)").arg(i));
        attachKeyFilter(m_txtName[i], SpouseLengths().at(i));
        SendTabOnEnter(m_txtName[i]);
        block->addWidget(m_lblName[i], i / 2, (i % 2) * 2);
        block->addWidget(m_txtName[i], i / 2, (i % 2) * 2 + 1);
    }
    m_txtName[1]->setToolTip(QStringLiteral("日期格式如：1997-01-01"));
    body()->addLayout(block);
    addPrintOption(m_title0->text());

    // Only the spouse's printout uses it: captions and values side by side.
    m_grid2->setObjectName(QStringLiteral("Grid2"));
    m_grid2->setMaxCols(6);
    const double widths[6] = {10, 12, 10, 12, 10, 12};
    for (int c = 1; c <= 6; ++c)
        m_grid2->setColWidth(c, widths[c - 1]);
    m_grid2->hide();
}

void frmRs_PersonFamily::load() {
    PersonRecordScreen::load();
    const MaritalState state = ReadMaritalState(m_code);
    m_married = state.found && state.married();
    if (state.found && !m_married) m_marryInform->setText(QLatin1Char('(') + state.fHy + QLatin1Char(')'));
    const bool spouseOpen = m_married && editing();
    for (int i = 0; i < 10; ++i)
        m_txtName[i]->setEnabled(spouseOpen);
    m_title0->setEnabled(m_married);
    if (m_married) {
        const SpouseRow row = ReadSpouse(m_code);
        for (int i = 0; i < 10; ++i)
            m_txtName[i]->setText(row.values.value(i));
        m_spouseLoaded = row.loaded;
    }
    // The captions are asked under the person table, where the dictionary no longer keeps them once
    // they were split off: the design captions then stay.
    for (int i = 0; i < 10; ++i) {
        const QString caption = GetFieldCaption(QStringLiteral("tRsBasic"), SpouseFields().at(i));
        if (caption != QStringLiteral("\t")) m_lblName[i]->setText(caption);
    }
}

QStringList frmRs_PersonFamily::spouseValues() const {
    QStringList v;
    for (QLineEdit* t : m_txtName)
        v << t->text();
    return v;
}

void frmRs_PersonFamily::save() {
    const QStringList spouse = spouseValues();
    // Checked before anything is stored, so that a wrong date saves nothing at all.
    if (m_married && WrongSpouseDate(spouse) >= 0) {
        ShowMsg(m_lblName[1]->text() + QStringLiteral(": 日期格式如：1997-01-01"), vbExclamation,
                windowTitle());
        m_txtName[1]->setFocus();
        return;
    }
    // The family rows and the spouse are two saves: the first stands if the second fails.
    const bool rows = saveGrid(0);
    if (m_married) {
        if (!SaveOrTell(this, [&] { WriteSpouse(m_code, spouse, m_spouseLoaded); })) return;
        logSaved(m_title0->text());
        m_spouseLoaded = ReadSpouse(m_code).loaded;
    }
    if (rows) accept();
}

void frmRs_PersonFamily::lblName_DblClick(int i) {
    if (!m_married || !editing()) return;
    Hourglass wait;
    const QString value = FieldOfLabel(i, *m_lblName[i], QStringLiteral("tRsBasic_P"), 0);
    if (!value.isEmpty()) m_txtName[i]->setText(value);
}

void frmRs_PersonFamily::lblName_RightClick(int i) {
    FieldOfLabel(i, *m_lblName[i], QStringLiteral("tRsBasic_P"), 1);
}

bool frmRs_PersonFamily::eventFilter(QObject* watched, QEvent* event) {
    for (int i = 0; i < 10; ++i) {
        if (watched != m_lblName[i]) continue;
        if (event->type() == QEvent::MouseButtonDblClick) {
            guarded([this, i] { lblName_DblClick(i); });
            return true;
        }
        if (event->type() == QEvent::MouseButtonPress &&
            static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
            guarded([this, i] { lblName_RightClick(i); });
            return true;
        }
    }
    return PersonRecordScreen::eventFilter(watched, event);
}

void frmRs_PersonFamily::printPart(int part) {
    if (part == 0) {
        PersonRecordScreen::printPart(part);
        return;
    }
    // Columns 1-2 take boxes 0, 3, 6, 9; columns 3-4 boxes 1, 4, 7; columns 5-6 boxes 2, 5, 8.
    m_grid2->setMaxRows(4);
    m_grid2->clear();
    for (int i = 0; i < 10; ++i) {
        const int row = i / 3 + 1;
        const int col = (i % 3) * 2 + 1;
        m_grid2->setText(row, col, m_lblName[i]->text());
        m_grid2->setText(row, col + 1, m_txtName[i]->text());
    }
    PrintGrid(printItems(part), m_grid2, m_title0->text());
}

} // namespace zq
