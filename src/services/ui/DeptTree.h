#pragma once

#include "services/HeadCounts.h"

#include <QIcon>
#include <QString>

#include <functional>

class QObject;
class QTreeWidget;
class QTreeWidgetItem;

namespace zq {

// Images of the code trees: a department (fYnxj 0), the company at the root, a post or any other
// entry.
enum TreeImage : int { ImageDept = 1, ImageRoot = 2, ImagePost = 5 };
QIcon TreeImageIcon(int image);

// Fills a tree from a code table (fCode, fName, fLimited, fYnxj) in code order. The root "B" is the
// company; each entry's key is "B" and its trimmed code, and it hangs under the nearest entry above
// it whose code begins its own, or the root. showCode -1 puts the code and a tab before the name;
// showCounts 1 puts a tab and "(限n人,共m人)" behind it (persons in `state`, sub-entries included);
// withLeaves 0 keeps entries of fYnxj 0 only. The counts come from one grouped statement, equal to
// one CountPersons per node. warnOverQuota draws an entry whose count exceeds its quota (above 0)
// in a warning colour, its text unchanged.
void FillDeptTree(QTreeWidget* tree, const QString& table, const QString& prefix, qint16 showCode,
                  qint32 state, qint16 showCounts, qint16 withLeaves, bool warnOverQuota = false);

// Counts the persons again for a tree FillDeptTree filled with counts and rewrites the counts in
// its node texts, keeping the nodes, their expansion and the selection: after persons were added,
// removed or moved. A tree filled without counts is left alone.
void RefreshTreeCounts(QTreeWidget* tree, const QString& table, qint32 state, bool warnOverQuota = false);

// Whether an entry's head count exceeds its quota (above 0), as FillDeptTree counted them; never
// when the tree was filled without counts. The quota and count are given back when asked for.
bool NodeOverQuota(const QTreeWidgetItem* item, double* limit = nullptr, int* count = nullptr);
// The entries over their quota.
int CountOverQuota(QTreeWidget* tree);

// Keys and images of tree nodes, as FillDeptTree and AddNode set them.
QString NodeKey(const QTreeWidgetItem* item);
int NodeImage(const QTreeWidgetItem* item);
void SetNodeImage(QTreeWidgetItem* item, int image);
// The node of a key, nullptr when none.
QTreeWidgetItem* FindNode(QTreeWidget* tree, const QString& key);
// A new node under `parent` (a top-level node when nullptr), at `index` among its siblings or last
// when -1. A key already in the tree is refused with a DbError, as the tree refuses it.
QTreeWidgetItem* AddNode(QTreeWidget* tree, QTreeWidgetItem* parent, const QString& key, const QString& text,
                         int image, int index = -1);

// Calls onClick once for each click on a node. A click that moves to another node arrives twice
// (the change, then the click); a change while filling() holds is a refill, not a click.
void ConnectNodeClick(QTreeWidget* tree, QObject* context, std::function<bool()> filling,
                      std::function<void(QTreeWidgetItem*)> onClick);

} // namespace zq
