#include "GridView.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpressionValidator>

#include <algorithm>

namespace zq {

GridView::GridView(ZqGrid* grid)
    : QTableView(grid)
    , m_grid(grid) {}

void GridView::keyPressEvent(QKeyEvent* event) {
    emit m_grid->keyDown(event->key(), event->modifiers());
    const bool plain = !(event->modifiers() & ~Qt::KeypadModifier);
    if (plain && state() != EditingState) {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            m_grid->onEnterKey();
            event->accept();
            return;
        }
        if (event->key() == Qt::Key_Down && m_grid->m_appendOnDown && m_grid->activeRow() >= 1 &&
            m_grid->activeRow() == m_grid->maxRows()) {
            m_grid->onDownKey();
            event->accept();
            return;
        }
    }
    QTableView::keyPressEvent(event);
}

GridDelegate::GridDelegate(ZqGrid* grid)
    : QStyledItemDelegate(grid)
    , m_grid(grid) {}

QWidget* GridDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                    const QModelIndex& index) const {
    const GridModel::Column& col = column(index);
    if (col.type != ZqGrid::CellText) {
        auto* edit = new QLineEdit(parent);
        const int places = col.type == ZqGrid::CellDecimal ? col.decimals : 0;
        const QString pattern =
            places > 0 ? QStringLiteral("-?\\d*(\\.\\d{0,%1})?").arg(places) : QStringLiteral("-?\\d*");
        edit->setValidator(new QRegularExpressionValidator(QRegularExpression(pattern), edit));
        edit->setAlignment(Qt::AlignRight);
        edit->setFrame(false);
        return edit;
    }
    if (col.multiLine) {
        auto* edit = new QPlainTextEdit(parent);
        edit->setObjectName(QStringLiteral("longTextEditor"));
        edit->setFrameShape(QFrame::Box); // it stands over its neighbours: show where it ends
        edit->setTabChangesFocus(true);
        if (const int max = col.maxLength; max > 0) {
            QObject::connect(edit, &QPlainTextEdit::textChanged, edit, [edit, max] {
                const QString t = edit->toPlainText();
                if (t.size() <= max) return;
                edit->setPlainText(t.left(max));
                edit->moveCursor(QTextCursor::End);
            });
        }
        return edit;
    }
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    if (col.maxLength > 0) edit->setMaxLength(col.maxLength);
    return edit;
}

void GridDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* plain = qobject_cast<QPlainTextEdit*>(editor)) {
        plain->setPlainText(text);
        plain->selectAll();
    } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        line->setText(text);
    }
}

void GridDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const {
    if (auto* plain = qobject_cast<QPlainTextEdit*>(editor))
        model->setData(index, plain->toPlainText(), Qt::EditRole);
    else if (auto* line = qobject_cast<QLineEdit*>(editor))
        model->setData(index, line->text(), Qt::EditRole);
}

QRect GridDelegate::longTextRect(const QRect& cell, const QRect& area, const QFontMetrics& fm) {
    // Six lines of about 30 Chinese characters, or the cell when that is larger; within the grid.
    constexpr int kLines = 6;
    constexpr int kChars = 30;
    QRect r = cell;
    r.setWidth(std::min(std::max(cell.width(), fm.horizontalAdvance(QChar(0x4E2D)) * kChars), area.width()));
    r.setHeight(std::min(std::max(cell.height(), fm.lineSpacing() * kLines + 12), area.height()));
    if (r.right() > area.right()) r.moveRight(area.right());
    if (r.bottom() > area.bottom()) r.moveBottom(area.bottom());
    if (r.left() < area.left()) r.moveLeft(area.left());
    if (r.top() < area.top()) r.moveTop(area.top());
    return r;
}

void GridDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const {
    if (qobject_cast<QPlainTextEdit*>(editor) && editor->parentWidget()) {
        editor->setGeometry(longTextRect(option.rect, editor->parentWidget()->rect(), editor->fontMetrics()));
        return;
    }
    QStyledItemDelegate::updateEditorGeometry(editor, option, index);
}

void GridDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(option, index);
    const GridModel::Column& col = column(index);
    option->features.setFlag(QStyleOptionViewItem::WrapText, col.type == ZqGrid::CellText && col.multiLine);
}

bool GridDelegate::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            auto* editor = qobject_cast<QWidget*>(object);
            auto* plain = qobject_cast<QPlainTextEdit*>(object);
            if (plain && (key->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier))) {
                plain->insertPlainText(QStringLiteral("\n"));
                return true;
            }
            if (editor) {
                emit commitData(editor);
                emit closeEditor(editor, QAbstractItemDelegate::NoHint);
                m_grid->onEnterKey();
                return true;
            }
        }
    }
    return QStyledItemDelegate::eventFilter(object, event);
}

const GridModel::Column& GridDelegate::column(const QModelIndex& index) const {
    return m_grid->m_model->m_cols[index.column() + 1];
}

} // namespace zq
