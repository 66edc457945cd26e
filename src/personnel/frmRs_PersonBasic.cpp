#include "frmRs_PersonBasic.h"

#include "personnel/PersonBrowserData.h"
#include "printing/Photos.h"
#include "services/FieldDictionary.h"
#include "services/InputAids.h"
#include "services/Lookups.h"
#include "services/ui/ComboLookups.h"
#include "services/ui/GridBinding.h"
#include "services/ui/InputAidsUi.h"
#include "services/ui/SaveOrTell.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Prompts.h"
#include "shell/Rights.h"
#include "shell/SqlText.h"
#include "shell/ui/Commands.h"

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDate>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPixmap>
#include <QPushButton>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace zq {

namespace {
const QString kTitle = QStringLiteral("人事管理");
const QString kTable = QStringLiteral("tRsBasic");

// Captions until the field dictionary gives its own.
constexpr int kDateFields[] = {3, 25};
constexpr int kFieldColumns = 3; // label/field pairs a row

QString today() {
    return QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"));
}

void fillBrief(QComboBox* combo, const QString& field, bool blank) {
    combo->clear();
    if (blank) combo->addItem(QString());
    quint8 withCode = 0;
    FillBriefCombo(combo, GetFieldBriefType(kTable, field), withCode);
}

// The person in hand, kept while a picker screen uses it for its own choice.
struct PersonInHand {
    QString code = G().CurPersonCode;
    QString name = G().CurPersonName;
    void restore() const {
        G().CurPersonCode = code;
        G().CurPersonName = name;
    }
};
} // namespace

frmRs_PersonBasic::frmRs_PersonBasic(QWidget* parent)
    : QDialog(parent) {
    setObjectName(QStringLiteral("frmRs_PersonBasic"));
    setWindowTitle(QStringLiteral("基本资料"));
    buildUi();
    setPhotoBox([this](const QString& file) { showPicture(file); });
}

frmRs_PersonBasic::~frmRs_PersonBasic() {
    setPhotoBox({});
}

QComboBox* frmRs_PersonBasic::comboOf(int index) const {
    switch (index) {
    case 2:
        return m_comSex;
    case 5:
        return m_comhy;
    case 11:
        return m_comxz;
    case 20:
        return m_cboRz;
    case 23:
        return m_comzf;
    case 24:
        return m_comGz;
    case 26:
        return m_comBm;
    case 37:
        return m_cobFunit;
    case 47:
        return m_combo1;
    default:
        return nullptr;
    }
}

QWidget* frmRs_PersonBasic::fieldWidget(int index) const {
    if (IsBasicCombo(index)) return comboOf(index);
    return m_text2[index];
}

void frmRs_PersonBasic::buildUi() {
    const auto combo = [this](const char* name, bool editable) {
        auto* c = new QComboBox(this);
        c->setObjectName(QLatin1String(name));
        c->setEditable(editable);
        c->installEventFilter(this);
        // An editable box types into its own line, which sees the keys and the focus first.
        if (editable) c->lineEdit()->installEventFilter(this);
        return c;
    };
    m_comSex = combo("ComSex", false);
    m_comhy = combo("Comhy", false);
    m_comxz = combo("Comxz", false);
    m_cboRz = combo("cboRz", true);
    m_comzf = combo("Comzf", false);
    m_comGz = combo("ComGz", false);
    m_comBm = combo("ComBm", false);
    m_cobFunit = combo("CobFunit", true);
    m_combo1 = combo("Combo1", false);

    auto* fields = new QGridLayout;
    fields->setHorizontalSpacing(6);
    fields->setVerticalSpacing(4);
    const QVector<int> order = BasicFieldOrder();
    for (int place = 0; place < kBasicFields; ++place) {
        const int i = order.at(place);
        auto* label = new QLabel(BasicCaption(i), this);
        label->setObjectName(QStringLiteral("Label2(%1)").arg(i));
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        label->installEventFilter(this);
        m_label2[i] = label;
        if (!IsBasicCombo(i)) {
            auto* box = new QLineEdit(this);
            box->setObjectName(QStringLiteral("Text2(%1)").arg(i));
            box->installEventFilter(this);
            attachKeyFilter(box, BasicFieldMax(i));
            m_text2[i] = box;
        }
        QWidget* w = fieldWidget(i);
        label->setBuddy(w);
        w->setMinimumWidth(150);
        const int r = place / kFieldColumns;
        const int c = (place % kFieldColumns) * 2;
        if (IsRequiredBasicField(i)) {
            // The mark stands apart from the caption, which the dictionary may rename.
            auto* mark = new QLabel(QStringLiteral("*"), this);
            mark->setObjectName(QStringLiteral("lblRequired(%1)").arg(i));
            mark->setStyleSheet(QStringLiteral("color: #c00000; font-weight: bold;"));
            mark->setToolTip(QStringLiteral("必须填写"));
            auto* cell = new QHBoxLayout;
            cell->setSpacing(2);
            cell->addStretch(1);
            cell->addWidget(mark);
            cell->addWidget(label);
            fields->addLayout(cell, r, c);
        } else {
            fields->addWidget(label, r, c);
        }
        fields->addWidget(w, r, c + 1);
    }
    // Combo boxes were made first; put every field in the tab chain in the order shown.
    for (int place = 1; place < kBasicFields; ++place)
        setTabOrder(fieldWidget(order.at(place - 1)), fieldWidget(order.at(place)));
    for (int c = 1; c < kFieldColumns * 2; c += 2)
        fields->setColumnStretch(c, 1);

    m_labbm = new QLabel(this);
    m_labbm->setObjectName(QStringLiteral("Labbm"));
    m_labbm->hide();

    m_image1 = new QLabel(this);
    m_image1->setObjectName(QStringLiteral("Image1"));
    m_image1->setFixedSize(132, 165);
    m_image1->setFrameShape(QFrame::Box);
    m_image1->setAlignment(Qt::AlignCenter);
    m_image1->setToolTip(QStringLiteral("双击选择相片，右键编辑或删除"));
    m_image1->installEventFilter(this);
    m_mnuPic = new QMenu(QStringLiteral("相片"), this);
    m_mnuPic->setObjectName(QStringLiteral("mnuPic"));
    QAction* edit = m_mnuPic->addAction(QStringLiteral("相片编辑"), this, [this] { mnuPicEdit_Click(); });
    edit->setObjectName(QStringLiteral("mnuPicEdit"));
    QAction* del = m_mnuPic->addAction(QStringLiteral("相片删除"), this, [this] { mnuPicDel_Click(); });
    del->setObjectName(QStringLiteral("mnuPicDel"));

    m_cmdOK = new QPushButton(QStringLiteral("存盘"), this);
    m_cmdOK->setObjectName(QStringLiteral("cmdOK"));
    m_cmdCancel = new QPushButton(QStringLiteral("返回"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    for (QPushButton* b : {m_cmdOK, m_cmdCancel})
        b->setAutoDefault(false);
    setTabOrder(fieldWidget(order.last()), m_cmdOK);
    setTabOrder(m_cmdOK, m_cmdCancel);

    auto* side = new QVBoxLayout;
    side->addWidget(m_image1);
    side->addStretch(1);
    side->addWidget(m_cmdOK);
    side->addWidget(m_cmdCancel);
    auto* top = new QHBoxLayout;
    top->addLayout(fields, 1);
    top->addLayout(side);
    // What was saved is said here: adding goes on with an empty form and no box to click away.
    m_status = new QStatusBar(this);
    m_status->setObjectName(QStringLiteral("sbStatus"));
    m_status->setSizeGripEnabled(false);
    auto* legend =
        new QLabel(QStringLiteral("带 <span style=\"color:#c00000\"><b>*</b></span> 的项目必须填写"), this);
    legend->setObjectName(QStringLiteral("lblRequiredLegend"));
    m_status->addPermanentWidget(legend);
    auto* page = new QVBoxLayout(this);
    page->addLayout(top, 1);
    page->addWidget(m_status);

    connect(m_comBm, &QComboBox::activated, this, [this] { ComBm_Click(); });
    connect(m_cobFunit, &QComboBox::activated, this, [this] { CobFunit_Click(); });
    connect(m_cboRz, &QComboBox::activated, this, [this] { cboRz_Click(); });
    connect(m_cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    connect(m_cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

QString frmRs_PersonBasic::compName() const {
    return m_text2[51]->text();
}

void frmRs_PersonBasic::setCompName(const QString& name) {
    m_text2[51]->setText(name);
}

void frmRs_PersonBasic::showEvent(QShowEvent* event) {
    if (!m_loaded) {
        m_loaded = true;
        load();
        ExportPhotos();
    }
    QDialog::showEvent(event);
}

void frmRs_PersonBasic::load() {
    m_mode = G().PersonEditMode;
    CenterForm(this);
    m_houseTag = QStringLiteral("1");
    m_comSex->clear();
    m_comSex->addItems({QStringLiteral("男"), QStringLiteral("女")});
    m_comSex->setCurrentIndex(0);
    fillBrief(m_comhy, QStringLiteral("fhy"), true);
    m_comhy->setCurrentIndex(m_comhy->count() >= 2 ? 1 : 0);
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_comBm, G().DeptScope, 0, 0);
    for (int i = 0; i < kBasicFields; ++i) {
        const QString caption = GetFieldCaption(kTable, FieldOfLabel(i, *m_label2[i], kTable, 3));
        if (caption != QStringLiteral("\t")) m_label2[i]->setText(caption);
    }
    fillBrief(m_comxz, QStringLiteral("fygxz"), true);
    fillBrief(m_combo1, QStringLiteral("bodytype"), true);
    fillBrief(m_cobFunit, QStringLiteral("funit"), true);
    fillBrief(m_comzf, QStringLiteral("fother2"), true);
    fillBrief(m_comGz, QStringLiteral("fGzName"), false);
    m_askTransfer = m_mode != 1;
    m_loadedPhoto = PhotoDigest({});
    if (m_mode == 0) lockControls();
    if (m_mode != 1 && !G().CurPersonCode.isEmpty()) LoadRecord();
    m_oldPost = m_cboRz->currentText();
}

void frmRs_PersonBasic::lockControls() {
    m_cmdOK->setEnabled(false);
    for (int i = 0; i < kBasicFields; ++i) {
        if (IsBasicCombo(i))
            comboOf(i)->setEnabled(false);
        else
            m_text2[i]->setReadOnly(true);
    }
}

void frmRs_PersonBasic::selectText(QComboBox* combo, const QString& text) {
    const int i = ComboIndexOf(combo, text);
    if (i >= 0) combo->setCurrentIndex(i);
}

void frmRs_PersonBasic::LoadRecord() {
    PersonBasicRow r;
    if (!LoadPersonBasic(G().CurPersonCode, r)) return;
    for (int i = 0; i < kBasicFields; ++i)
        if (!IsBasicCombo(i)) m_text2[i]->setText(r.values.at(i));
    m_loadedRow = r;
    m_loadedPhoto = PhotoDigest(PersonPhoto(G().CurPersonCode));
    m_loadedDeptName = r.values.at(26);
    // A department gone from the register stays the person's until changed, rather than the save
    // quietly moving them to another.
    ShowComboValue(m_comBm, m_loadedDeptName);
    // A department gone from the register keeps the person's code with its name.
    const QString deptCode = CodeFromName(QStringLiteral("tRs_Bm"), m_loadedDeptName);
    m_labbm->setText(deptCode.isEmpty() && m_comBm->currentIndex() < 0 ? r.bmCode : deptCode);
    m_loadedUnit = r.values.at(37);
    // The posts of the person's department are at hand for a change of post.
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_cboRz, m_labbm->text(), 1, 0);
    m_cboRz->setEditText(r.values.at(20));
    m_cobFunit->setEditText(r.values.at(37));
    for (int i : {2, 5, 11, 47, 23, 24})
        ShowComboValue(comboOf(i), r.values.at(i));
}

void frmRs_PersonBasic::ComBm_Click() {
    const QString dept = m_comBm->currentText();
    m_labbm->setText(CodeFromName(QStringLiteral("tRs_Bm"), dept));
    if (m_askTransfer && dept != m_loadedDeptName &&
        ShowMsg(QStringLiteral("是否生成调令:调动此人到别的部门?"), vbYesNo + vbInformation) == vbYes)
        OpenTransferOrder(false);
    // The post list follows the department; the post typed so far stays.
    const QString post = m_cboRz->currentText();
    FillCodeCombo(QStringLiteral("tRs_Bm"), m_cboRz, m_labbm->text(), 1, 0);
    m_cboRz->setEditText(post);
}

void frmRs_PersonBasic::CobFunit_Click() {
    const QString unit = m_cobFunit->currentText();
    if (unit.trimmed().isEmpty() || m_loadedUnit.trimmed().isEmpty()) return;
    if (m_askTransfer && unit != m_loadedUnit &&
        ShowMsg(QStringLiteral("真的要调动此人到别的分公司吗?"), vbYesNo + vbInformation) != vbNo)
        OpenTransferOrder(true);
}

void frmRs_PersonBasic::cboRz_Click() {
    const QString code = CodeFromName(QStringLiteral("tRs_Bm"), m_cboRz->currentText());
    qint32 limit = 0;
    quint8 level = 0;
    QString category;
    QString payLevel;
    if (GetDeptPost(code, limit, level, category, payLevel) != -1) return;
    // A post carries its staff category and pay level with it.
    if (!category.isEmpty()) selectText(m_comxz, category);
    if (!payLevel.isEmpty()) selectText(m_comGz, payLevel);
}

void frmRs_PersonBasic::OpenTransferOrder(bool unitChange) {
    const QString form = QStringLiteral("frmRs_PersonAssignOk");
    if (!hasForm(form)) return;
    const Globals& g = G();
    const QString unit = m_cobFunit->currentText();
    const QString dept = m_comBm->currentText();
    QVariantMap s;
    s.insert(QStringLiteral("cmdOkTag"), 1);
    s.insert(
        QStringLiteral("Text1_0"),
        QString::number(Val(NextCode(QStringLiteral("trsPersonMove"), QStringLiteral("movenmb"), {})) + 1));
    s.insert(QStringLiteral("Text1_1"), g.CurPersonName);
    s.insert(QStringLiteral("Text1_2"), g.CurPersonCode);
    s.insert(QStringLiteral("Text1_5"), m_oldPost);
    s.insert(QStringLiteral("Text1_8"), m_cboRz->currentText());
    s.insert(QStringLiteral("cboOldUnit"), unitChange ? m_loadedUnit : unit);
    s.insert(QStringLiteral("cboNewUnit"), unit);
    s.insert(QStringLiteral("cboOldDept"), unitChange ? dept : m_loadedDeptName);
    s.insert(QStringLiteral("cboNewDept"), dept);
    s.insert(QStringLiteral("Text1_9"), QString());
    s.insert(QStringLiteral("Text1_10"), g.UserName);
    s.insert(QStringLiteral("DTPStart"), QDate::currentDate());
    Hourglass wait;
    openForm(form, this, s);
}

PersonBasicRow frmRs_PersonBasic::row() const {
    PersonBasicRow r;
    for (int i = 0; i < kBasicFields; ++i)
        r.values[i] = IsBasicCombo(i) ? ComboValue(comboOf(i)) : m_text2[i]->text();
    r.bmCode = m_labbm->text();
    r.zt = CurrentRsState();
    return r;
}

bool frmRs_PersonBasic::refuse(const QString& message, QWidget* focus) {
    ShowMsg(message, vbExclamation, kTitle);
    if (auto* box = qobject_cast<QLineEdit*>(focus)) box->selectAll();
    focus->setFocus();
    return false;
}

bool frmRs_PersonBasic::validate() {
    for (int i = 0; i < kBasicFields; ++i) {
        if (IsBasicCombo(i) || !m_text2[i]->text().contains(QLatin1Char('\''))) continue;
        return refuse(QStringLiteral("你在记录中输入了单引号,清检查后删除!"), m_text2[i]);
    }
    if (m_text2[0]->text().isEmpty()) return refuse(QStringLiteral("“员工编号”不能为空。"), m_text2[0]);
    if (m_text2[1]->text().isEmpty()) return refuse(QStringLiteral("员工“姓名”不能为空。"), m_text2[1]);
    if (m_text2[25]->text().isEmpty()) return refuse(QStringLiteral("员工“受聘日期”不能为空。"), m_text2[25]);
    for (int i : kDateFields)
        m_text2[i]->setText(FormatIsoDate(m_text2[i]->text()));
    const QString own = G().CurPersonCode;
    bool taken = false;
    const QString other = IdCardOwner(m_text2[7]->text(), own, taken);
    if (taken)
        return refuse(QStringLiteral("“身份证号”与他人(") + other + QStringLiteral(")重复，请重新输入。"),
                      m_text2[7]);
    const QString code = m_text2[0]->text();
    const CodeCheck check = m_mode == 1 ? CheckNewCode(code) : CheckChangedCode(own, code);
    if (check == CodeCheck::Taken)
        return refuse(QStringLiteral("“员工编号”与他人重复，请重新输入。"), m_text2[0]);
    if (check == CodeCheck::Missing)
        return refuse(QStringLiteral("此“员工编号”记录并不存在，请退出重新修改。"), m_text2[0]);
    return true;
}

void frmRs_PersonBasic::cmdOK_Click() {
    if (m_mode == 0 || !validate()) return;
    const PersonBasicRow r = row();
    if (!SaveOrTell(this, [&] { SavePersonBasic(m_mode, r, G().CurPersonCode, m_loadedRow); })) return;
    // The photo is written only when the clerk chose a new one or took it away: a save of other
    // fields keeps the stored picture, the one on show.
    if (!m_photoPath.isEmpty() || m_photoRemoved) {
        bool photoSaved = false;
        QString reason;
        try {
            photoSaved = StorePersonPhoto(r.values.at(0), m_photoPath, m_loadedPhoto);
        } catch (const ConflictError& e) {
            reason = QStringLiteral("\n\n") + e.message();
        } catch (const DbError&) {
        }
        if (!photoSaved) ShowMsg(QStringLiteral("员工照片存盘错误!") + reason, vbExclamation, windowTitle());
    }
    afterSave(m_mode);
}

void frmRs_PersonBasic::afterSave(int mode) {
    Globals& g = G();
    g.CurPersonCode = m_text2[0]->text();
    g.CurPersonName = m_text2[1]->text();
    g.CurPersonDeptCode = m_labbm->text();
    g.CurPersonSex = m_comSex->currentText();
    const QString who =
        QStringLiteral(" [") + g.CurPersonCode + QLatin1Char('-') + g.CurPersonName + QLatin1Char(']');
    if (mode == 2) {
        WriteLogRecord(QStringLiteral("修改人事记录") + who);
        accept();
        return;
    }
    WriteLogRecord(QStringLiteral("增加员工记录") + who);
    m_status->showMessage(
        SavedPersonText(g.CurPersonCode, g.CurPersonName, m_comBm->currentText(), m_cboRz->currentText()));
    // The combo boxes keep their values for the next person.
    for (int i = 0; i < kBasicFields; ++i)
        if (!IsBasicCombo(i)) m_text2[i]->clear();
    m_image1->clear();
    m_photoPath.clear();
    m_photoRemoved = false;
    m_loadedPhoto = PhotoDigest({});
    m_text2[0]->setFocus();
}

void frmRs_PersonBasic::Label2_DblClick(int index) {
    if (m_mode == 0) return;
    if (index == 26) {
        if (!hasForm(QStringLiteral("frmRs_Dept"))) return;
        const PersonInHand person;
        G().CurPersonCode.clear();
        G().CurPersonName.clear();
        openForm(QStringLiteral("frmRs_Dept"), this, {{QStringLiteral("myTable"), QStringLiteral("trs_bm")}});
        const QString chosen = G().CurPersonName;
        person.restore();
        const int i = chosen.isEmpty() ? -1 : ComboIndexOf(m_comBm, chosen);
        if (i >= 0 && m_comBm->isEnabled()) {
            m_comBm->setCurrentIndex(i);
            ComBm_Click();
        }
        return;
    }
    if (index == 48 && m_houseTag == QStringLiteral("1")) {
        if (!hasForm(QStringLiteral("frmRs_House"))) return;
        if (CheckModel(QStringLiteral("mnuRsHouseSet"), 0) == 0) return;
        G().CurRoomCode.clear();
        G().CurRoomName.clear();
        openForm(QStringLiteral("frmRs_House"), this,
                 {{QStringLiteral("State"), 0},
                  {QStringLiteral("PersonSex"), m_comSex->currentText()},
                  {QStringLiteral("PersonRoom"), m_text2[48]->text()}});
        const QString room = G().CurRoomCode;
        if (!room.isEmpty()) m_text2[48]->setText(room);
        return;
    }
    const QString value = FieldOfLabel(index, *m_label2[index], kTable, 0);
    if (!value.isEmpty() && !IsBasicCombo(index)) m_text2[index]->setText(value);
}

void frmRs_PersonBasic::Label2_RightClick(int index) {
    FieldOfLabel(index, *m_label2[index], kTable, 1);
}

void frmRs_PersonBasic::showPicture(const QString& file) {
    QPixmap picture;
    if (file.isEmpty() || !picture.load(file)) {
        m_image1->clear();
        return;
    }
    m_image1->setPixmap(
        picture.scaled(m_image1->contentsRect().size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

QString frmRs_PersonBasic::statusText() const {
    return m_status->currentMessage();
}

bool frmRs_PersonBasic::hasPicture() const {
    return !m_image1->pixmap().isNull();
}

void frmRs_PersonBasic::mnuPicEdit_Click() {
    if (m_mode != 1 && m_mode != 2) return;
    const QString file =
        PickFile(1, 0, {}, QStringLiteral("照片文件"),
                 QStringLiteral("(*.BMP;*.JPG;*.PNG)|*.bmp;*.jpg;*.jpeg;*.png|(所有文件)|*.*"));
    if (file.isEmpty()) return;
    QPixmap picture;
    if (!picture.load(file)) {
        ShowMsg(QStringLiteral("照片文件格式错误 !   "), vbExclamation);
        return;
    }
    showPicture(file);
    m_photoPath = file;
    m_photoRemoved = false;
}

void frmRs_PersonBasic::mnuPicDel_Click() {
    m_image1->clear();
    m_photoPath.clear();
    m_photoRemoved = true;
}

void frmRs_PersonBasic::Text2_GotFocus(int index) {
    if (m_mode != 0) OfferToday(m_text2[index]);
}

bool frmRs_PersonBasic::Text2_LostFocus(int index) {
    QLineEdit* box = m_text2[index];
    if (box->text().isEmpty() || IsDateText(box->text())) return true;
    ShowMsg(QStringLiteral("[日期格式] 应如: ") + today() + QLatin1Char('.'), vbExclamation);
    box->setText(today());
    // Take the focus back once the change of focus under way has finished.
    QTimer::singleShot(0, box, [box] {
        box->setFocus();
        box->selectAll();
    });
    return false;
}

bool frmRs_PersonBasic::eventFilter(QObject* watched, QEvent* event) {
    for (QComboBox* c : {m_cboRz, m_cobFunit})
        if (watched == c->lineEdit()) watched = c;
    const int label = std::find(std::begin(m_label2), std::end(m_label2), watched) - std::begin(m_label2);
    if (label < kBasicFields) {
        if (event->type() == QEvent::MouseButtonDblClick) {
            Label2_DblClick(label);
            return true;
        }
        if (event->type() == QEvent::MouseButtonPress &&
            static_cast<QMouseEvent*>(event)->button() == Qt::RightButton) {
            Label2_RightClick(label);
            return true;
        }
        return false;
    }
    if (watched == m_image1) {
        if (event->type() == QEvent::MouseButtonDblClick) {
            mnuPicEdit_Click();
            return true;
        }
        if (event->type() == QEvent::ContextMenu && m_mode != 0) {
            m_mnuPic->popup(static_cast<QContextMenuEvent*>(event)->globalPos());
            return true;
        }
        return false;
    }
    const int text = std::find(std::begin(m_text2), std::end(m_text2), watched) - std::begin(m_text2);
    const bool isDate = text == 3 || text == 25;
    if (isDate && event->type() == QEvent::FocusIn) Text2_GotFocus(text);
    if (isDate && event->type() == QEvent::FocusOut) Text2_LostFocus(text);
    if ((watched == m_cboRz || watched == m_cobFunit) && event->type() == QEvent::FocusOut) {
        auto* combo = static_cast<QComboBox*>(watched);
        const QString cut = LimitLength(combo->currentText(), 30, {});
        if (cut != combo->currentText()) combo->setEditText(cut);
    }
    if (event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    const bool enter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (text < kBasicFields) {
        if (enter || key == Qt::Key_Down) {
            focusNextChild();
            return true;
        }
        if (key == Qt::Key_Up) {
            focusPreviousChild();
            return true;
        }
        return false;
    }
    if (enter && qobject_cast<QComboBox*>(watched)) {
        if (watched == m_cobFunit)
            m_text2[0]->setFocus();
        else
            focusNextChild();
        return true;
    }
    return false;
}

} // namespace zq
