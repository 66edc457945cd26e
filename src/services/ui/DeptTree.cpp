#include "DeptTree.h"

#include "services/Lookups.h"
#include "shell/DbError.h"
#include "shell/Globals.h"
#include "shell/Recordset.h"
#include "shell/SqlText.h"

#include <cmath>
#include <memory>
#include <optional>
#include <QAbstractItemModel>
#include <QFontMetrics>
#include <QHash>
#include <QHeaderView>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QSqlQuery>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <utility>

namespace zq {

namespace {

constexpr int kKeyRole = Qt::UserRole;
constexpr int kImageRole = Qt::UserRole + 1;
constexpr int kLimitRole = Qt::UserRole + 2;
constexpr int kCountRole = Qt::UserRole + 3;
constexpr int kBaseTextRole = Qt::UserRole + 4; // the node text before its counts
const char* const kKeysName = "zqNodeKeys";

// The key map of a tree. Adding through AddNode or FillDeptTree keeps it; any removal or reset of
// the tree's rows drops it, and the next look-up rebuilds it from the items.
class NodeKeys : public QObject {
public:
    explicit NodeKeys(QTreeWidget* tree)
        : QObject(tree)
        , m_tree(tree) {
        setObjectName(QLatin1String(kKeysName));
        QAbstractItemModel* model = tree->model();
        connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, &NodeKeys::invalidate);
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &NodeKeys::invalidate);
        connect(model, &QAbstractItemModel::layoutAboutToBeChanged, this, &NodeKeys::invalidate);
    }

    static NodeKeys* of(QTreeWidget* tree) {
        for (QObject* child : tree->children())
            if (child->objectName() == QLatin1String(kKeysName)) return static_cast<NodeKeys*>(child);
        return new NodeKeys(tree);
    }

    void invalidate() {
        m_valid = false;
        m_map.clear();
    }

    QTreeWidgetItem* find(const QString& key) {
        if (m_valid) {
            QTreeWidgetItem* item = m_map.value(key);
            if (item && NodeKey(item) == key) return item;
        }
        // Not known: nodes may have been added or re-keyed behind the map's back.
        rebuild();
        return m_map.value(key);
    }

    void add(const QString& key, QTreeWidgetItem* item) {
        if (m_valid) m_map.insert(key, item);
    }

    void set(QHash<QString, QTreeWidgetItem*> map) {
        m_map = std::move(map);
        m_valid = true;
    }

private:
    void rebuild() {
        m_map.clear();
        for (QTreeWidgetItemIterator it(m_tree); *it; ++it) {
            const QString key = NodeKey(*it);
            if (!key.isEmpty() && !m_map.contains(key)) m_map.insert(key, *it);
        }
        m_valid = true;
    }

    QTreeWidget* m_tree;
    QHash<QString, QTreeWidgetItem*> m_map;
    bool m_valid = false;
};

QPixmap drawImage(int image, int size) {
    QPixmap pm(size, size);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 16.0, size / 16.0);
    p.setPen(QPen(QColor(60, 60, 60), 0.8));
    switch (image) {
    case ImageRoot: { // the company: a building with windows
        p.setBrush(QColor(96, 140, 200));
        p.drawRect(QRectF(2.5, 2.5, 11, 12));
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(235, 242, 250));
        for (int row = 0; row < 3; ++row)
            for (int col = 0; col < 3; ++col)
                p.drawRect(QRectF(4 + col * 3, 4 + row * 3, 2, 2));
        p.setBrush(QColor(60, 60, 60));
        p.drawRect(QRectF(7, 12.5, 2, 2));
        break;
    }
    case ImageDept: { // a department: a folder
        QPainterPath tab;
        tab.addRoundedRect(QRectF(1.5, 3, 6, 3), 1, 1);
        p.setBrush(QColor(222, 170, 40));
        p.drawPath(tab);
        p.setBrush(QColor(246, 200, 70));
        p.drawRoundedRect(QRectF(1.5, 4.5, 13, 9), 1, 1);
        break;
    }
    case ImagePost: { // a post: a person
        p.setBrush(QColor(70, 160, 90));
        p.drawEllipse(QRectF(5.5, 1.5, 5, 5));
        QPainterPath body;
        body.moveTo(2.5, 14.5);
        body.cubicTo(2.5, 8, 13.5, 8, 13.5, 14.5);
        body.closeSubpath();
        p.drawPath(body);
        break;
    }
    default:
        break;
    }
    return pm;
}

class CodeNode;
CodeNode* newNode(const QString& key, const QString& text, int image);

void markOverQuota(QTreeWidgetItem* item) {
    double limit = 0;
    int count = 0;
    if (!NodeOverQuota(item, &limit, &count)) {
        // A recount may bring a department back within its quota.
        if (item->toolTip(0).isEmpty()) return;
        item->setData(0, Qt::ForegroundRole, QVariant());
        item->setData(0, Qt::FontRole, QVariant());
        item->setToolTip(0, QString());
        return;
    }
    // A dark red that reads on the light and the dark palette alike.
    item->setForeground(0, QColor(196, 40, 28));
    QFont font = item->font(0);
    font.setBold(true);
    item->setFont(0, font);
    item->setToolTip(0, QStringLiteral("超编%1人").arg(count - limit, 0, 'g', 15));
}

// Shows the tabs of node texts as an even gap: the text itself keeps its tabs, which readers of the
// node text split at, but tab stops would scatter names and counts at uneven places.
class NodeTextDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale& locale) const override {
        QString text = QStyledItemDelegate::displayText(value, locale);
        return text.replace(QLatin1Char('\t'), QStringLiteral("\u3000"));
    }
};

void useNodeTextDelegate(QTreeWidget* tree) {
    if (!dynamic_cast<NodeTextDelegate*>(tree->itemDelegate()))
        tree->setItemDelegate(new NodeTextDelegate(tree));
}

const QString kTab = QStringLiteral("\t");

QString rootCountText(qint64 total) {
    return kTab + QStringLiteral("(共") + QString::number(total) + QStringLiteral("人)");
}

QString entryCountText(double limit, qint64 count) {
    QString text = kTab + QLatin1Char('(');
    // Limits are whole numbers but for a rare typed fraction; whole ones skip the slow general form.
    const bool whole = limit < 1e15 && limit == double(qint64(limit));
    if (limit > 0)
        text += QStringLiteral("限") + (whole ? QString::number(qint64(limit)) : QString::number(limit, 'g', 15)) +
                QStringLiteral("人,");
    return text + QStringLiteral("共") + QString::number(count) + QStringLiteral("人)");
}

struct Entry {
    QString code;
    QString name;
    double limit;
    bool dept;
};

// A node of a filled tree holding its parts as plain fields and answering for its text, icon,
// key, quota and count when the view asks: a tree of tens of thousands of rooms is built without
// a stored value per role and node, and only the rows shown compose their texts. Whatever else is
// set on it (colours, tool tips) the item keeps as any other.
class CodeNode : public QTreeWidgetItem {
public:
    CodeNode(QString key, QString text, int image)
        : QTreeWidgetItem(UserType)
        , m_key(std::move(key))
        , m_base(std::move(text))
        , m_image(image) {}
    // With its limit and head count behind the text.
    void setCounts(double limit, qint64 count) {
        m_hasBase = m_counted = true;
        m_limit = limit;
        m_count = count;
    }
    // Its text as given is the base that counts follow (the root's, which has no limit).
    void keepBase() { m_hasBase = true; }

    QVariant data(int column, int role) const override {
        if (column == 0) switch (role) {
            case Qt::DisplayRole:
            case Qt::EditRole:
                if (m_ownText) return m_text;
                return m_counted ? m_base + entryCountText(m_limit, m_count) : m_base;
            case Qt::DecorationRole: {
                const QVariant set = QTreeWidgetItem::data(column, role);
                return set.isValid() ? set : QVariant(TreeImageIcon(m_image));
            }
            case kKeyRole:
                return m_key;
            case kImageRole:
                return m_image;
            case kBaseTextRole:
                return m_hasBase ? QVariant(m_base) : QVariant();
            case kLimitRole:
                return m_counted ? QVariant(m_limit) : QVariant();
            case kCountRole:
                return m_counted ? QVariant(m_count) : QVariant();
            default:
                break;
            }
        return QTreeWidgetItem::data(column, role);
    }

    void setData(int column, int role, const QVariant& value) override {
        if (column == 0) switch (role) {
            case Qt::DisplayRole:
            case Qt::EditRole:
                m_text = value.toString();
                m_ownText = true;
                return emitDataChanged();
            case kKeyRole:
                m_key = value.toString();
                return emitDataChanged();
            case kImageRole:
                m_image = value.toInt();
                return emitDataChanged();
            case kBaseTextRole:
                m_base = value.toString();
                m_hasBase = true;
                return emitDataChanged();
            case kLimitRole:
                m_limit = value.toDouble();
                return emitDataChanged();
            case kCountRole:
                m_count = value.toLongLong();
                return emitDataChanged();
            default:
                break;
            }
        QTreeWidgetItem::setData(column, role, value);
    }

private:
    QString m_key;
    QString m_base; // the text before the counts
    QString m_text; // a text set since, counts and all
    double m_limit = 0;
    qint64 m_count = 0;
    int m_image = 0;
    bool m_hasBase = false;
    bool m_counted = false;
    bool m_ownText = false;
};

// Width of a text in units of a digit, a Chinese character counting two.
int textUnits(const QString& text) {
    int units = 0;
    for (const QChar c : text)
        units += c.unicode() >= 0x2E80 ? 2 : 1;
    return units;
}

// The number of digits of a count or whole limit, for measuring texts without writing them.
int digits(double v) {
    int n = 1;
    for (v = std::abs(v); v >= 10 && n < 20; v /= 10)
        ++n;
    return n;
}

// A tree this large is measured once when filled; smaller ones leave the width to the header.
constexpr int kMeasuredTree = 5000;

// Gives the first column of a large tree the width of its widest row, measured on the one row
// whose text and depth look widest, instead of the header asking every row for its size; a tree
// measured so and filled small again sizes itself as before.
void fitFirstColumn(QTreeWidget* tree, CodeNode* widest, int depth) {
    static const char* const kMeasured = "zqMeasuredColumn";
    QHeaderView* header = tree->header();
    const bool measured = tree->property(kMeasured).toBool();
    if (!measured && header->sectionResizeMode(0) != QHeaderView::ResizeToContents) return;
    if (!widest) {
        if (measured) header->setSectionResizeMode(0, QHeaderView::ResizeToContents);
        tree->setProperty(kMeasured, QVariant());
        return;
    }
    QString text = widest->data(0, Qt::DisplayRole).toString();
    text.replace(QLatin1Char('\t'), QChar(0x3000));
    const QFontMetrics fm(tree->font());
    const int icon = tree->iconSize().isValid() ? tree->iconSize().width()
                                                : tree->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, tree);
    // Indentation per level and the root's, the icon, the text and a margin of two characters.
    const int width = tree->indentation() * (depth + 1) + icon + fm.horizontalAdvance(text) +
                      2 * fm.averageCharWidth() + 8;
    tree->setProperty(kMeasured, true);
    header->setSectionResizeMode(0, QHeaderView::Interactive);
    header->resizeSection(0, width);
}

} // namespace

namespace {
CodeNode* newNode(const QString& key, const QString& text, int image) {
    return new CodeNode(key, text, image);
}
} // namespace

QIcon TreeImageIcon(int image) {
    static QHash<int, QIcon> icons;
    if (!icons.contains(image)) {
        QIcon icon;
        if (image == ImageRoot || image == ImageDept || image == ImagePost)
            for (int size : {16, 24, 32})
                icon.addPixmap(drawImage(image, size));
        icons.insert(image, icon);
    }
    return icons.value(image);
}

QString NodeKey(const QTreeWidgetItem* item) {
    return item ? item->data(0, kKeyRole).toString() : QString();
}

int NodeImage(const QTreeWidgetItem* item) {
    return item ? item->data(0, kImageRole).toInt() : 0;
}

void SetNodeImage(QTreeWidgetItem* item, int image) {
    item->setData(0, kImageRole, image);
    item->setIcon(0, TreeImageIcon(image));
}

QTreeWidgetItem* FindNode(QTreeWidget* tree, const QString& key) {
    return NodeKeys::of(tree)->find(key);
}

QTreeWidgetItem* AddNode(QTreeWidget* tree, QTreeWidgetItem* parent, const QString& key, const QString& text,
                         int image, int index) {
    NodeKeys* keys = NodeKeys::of(tree);
    if (keys->find(key)) throw DbError(QStringLiteral("关键字不唯一: %1").arg(key));
    QTreeWidgetItem* item = newNode(key, text, image);
    const int count = parent ? parent->childCount() : tree->topLevelItemCount();
    const int at = index < 0 || index > count ? count : index;
    if (parent)
        parent->insertChild(at, item);
    else
        tree->insertTopLevelItem(at, item);
    keys->add(key, item);
    return item;
}

void FillDeptTree(QTreeWidget* tree, const QString& table, const QString& prefix, qint16 showCode,
                  qint32 state, qint16 showCounts, qint16 withLeaves, bool warnOverQuota) {
    QString sql =
        QStringLiteral("Select fCode,fName,fLimited,fYnxj from ") + table + QStringLiteral(" Where 1=1");
    if (withLeaves == 0) sql += QStringLiteral(" And fYnxj=0");
    if (!prefix.isEmpty()) sql += QStringLiteral(" And fCode like ") + quoted(prefix + QLatin1Char('%'));
    // Code order puts every entry after the entries whose codes begin it: the parent search needs it.
    sql += QStringLiteral(" Order by ") +
           conn().dialect().listOrder(QStringLiteral("fcode"), withLeaves != 0 && prefix.isEmpty());

    QVector<Entry> entries;
    QStringList codes;
    // Forward only, and numbers taken as numbers: tens of thousands of rooms are read in one pass.
    const auto number = [](const QVariant& v) {
        switch (v.typeId()) {
        case QMetaType::Double:
        case QMetaType::Int:
        case QMetaType::LongLong:
        case QMetaType::UInt:
        case QMetaType::ULongLong:
        case QMetaType::Short:
            return v.toDouble();
        default:
            return Val(textOf(v));
        }
    };
    VisitRows(sql, {}, [&](const QSqlQuery& q) {
        entries.append({TrimBlanks(textOf(q.value(0))), textOf(q.value(1)), number(q.value(2)),
                        number(q.value(3)) == 0});
        codes.append(entries.last().code);
    });

    tree->clear();
    useNodeTextDelegate(tree);
    const bool counts = showCounts == 1;
    // Without counts the root's count is never shown, so it is not asked for.
    std::optional<HeadCounts> heads;
    if (counts) {
        heads.emplace(table, state);
        heads->prepare(codes);
    }

    const QString rootText = G().CompName;
    // The nodes are linked while detached and enter the tree at once: one insertion, not thousands.
    std::unique_ptr<CodeNode> root(newNode(QStringLiteral("B"), rootText, ImageRoot));
    if (counts) {
        root->keepBase();
        root->setText(0, rootText + rootCountText(heads->total()));
    }
    QHash<QString, QTreeWidgetItem*> map;
    map.reserve(entries.size() + 1);
    map.insert(QStringLiteral("B"), root.get());

    QString previousCode;
    QTreeWidgetItem* previous = nullptr;
    int previousDepth = 0;
    CodeNode* widest = nullptr;
    int widestUnits = 0, widestDepth = 0;
    for (const Entry& e : entries) {
        const QString key = QStringLiteral("B") + e.code;
        auto slot = map.find(key);
        if (slot != map.end()) throw DbError(QStringLiteral("关键字不唯一: %1").arg(key));

        // The parent: climb from the previous entry until a node's code begins this one.
        QTreeWidgetItem* parent = root.get();
        int depth = 1;
        if (!previousCode.isEmpty()) {
            QTreeWidgetItem* node = previous;
            QString search = previousCode;
            for (int d = previousDepth;; --d) {
                if (e.code.startsWith(search)) {
                    parent = node;
                    depth = d + 1;
                    break;
                }
                node = node->parent();
                if (node == root.get()) break;
                search = NodeKey(node).mid(1);
            }
        }
        const QString text = showCode == -1 ? e.code + kTab + e.name : e.name;
        // Owned until added: a count that fails (a quote in a code) must not leak it.
        std::unique_ptr<CodeNode> node(newNode(key, text, e.dept ? ImageDept : ImagePost));
        CodeNode* item = node.get();
        // How wide its row looks, in digits: the indentation, the text and the counts.
        int units = depth * 2;
        if (counts) {
            const qint64 count = heads->count(e.code);
            item->setCounts(e.limit, count);
            units += digits(count) + (e.limit > 0 ? digits(e.limit) + 3 : 0);
            // Marked while detached: marking a shown tree afterwards lays it out again per node.
            if (warnOverQuota) markOverQuota(item);
        }
        parent->addChild(node.release());
        map.insert(key, item);
        previousCode = e.code;
        previous = item;
        previousDepth = depth;
        if (entries.size() >= kMeasuredTree) {
            units += textUnits(text);
            if (units > widestUnits) {
                widestUnits = units;
                widest = item;
                widestDepth = depth;
            }
        }
    }

    QTreeWidgetItem* top = root.release();
    tree->addTopLevelItem(top);
    NodeKeys::of(tree)->set(std::move(map));
    top->setExpanded(true);
    fitFirstColumn(tree, widest, widestDepth);
}

void RefreshTreeCounts(QTreeWidget* tree, const QString& table, qint32 state, bool warnOverQuota) {
    QVector<QTreeWidgetItem*> nodes;
    QStringList codes;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) {
        if (!(*it)->data(0, kBaseTextRole).isValid()) continue; // filled without counts, or added later
        nodes.append(*it);
        if ((*it)->parent()) codes.append(NodeKey(*it).mid(1));
    }
    if (nodes.isEmpty()) return;
    HeadCounts heads(table, state);
    heads.prepare(codes);
    for (QTreeWidgetItem* item : nodes) {
        const QString base = item->data(0, kBaseTextRole).toString();
        if (!item->parent()) {
            item->setText(0, base + rootCountText(heads.total()));
            continue;
        }
        const qint64 count = heads.count(NodeKey(item).mid(1));
        const double limit = item->data(0, kLimitRole).toDouble();
        item->setText(0, base + entryCountText(limit, count));
        item->setData(0, kCountRole, count);
        if (warnOverQuota) markOverQuota(item);
    }
}

int CountOverQuota(QTreeWidget* tree) {
    int over = 0;
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if (NodeOverQuota(*it)) ++over;
    return over;
}

bool NodeOverQuota(const QTreeWidgetItem* item, double* limit, int* count) {
    if (!item) return false;
    const QVariant l = item->data(0, kLimitRole);
    const QVariant n = item->data(0, kCountRole);
    if (!l.isValid() || !n.isValid()) return false;
    if (limit) *limit = l.toDouble();
    if (count) *count = n.toInt();
    return l.toDouble() > 0 && n.toInt() > l.toDouble();
}

void ConnectNodeClick(QTreeWidget* tree, QObject* context, std::function<bool()> filling,
                      std::function<void(QTreeWidgetItem*)> onClick) {
    auto changed = std::make_shared<QTreeWidgetItem*>(nullptr);
    QObject::connect(tree, &QTreeWidget::currentItemChanged, context,
                     [filling, onClick, changed](QTreeWidgetItem* node) {
                         if (filling() || !node) return;
                         *changed = node;
                         onClick(node);
                     });
    QObject::connect(tree, &QTreeWidget::itemClicked, context, [onClick, changed](QTreeWidgetItem* node) {
        if (std::exchange(*changed, nullptr) == node) return;
        onClick(node);
    });
}

} // namespace zq
