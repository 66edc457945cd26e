#pragma once

#include "TableDocument.h"

#include <QString>
#include <QStringList>

class QTreeWidget;

namespace zq {

class ZqGrid;

// mdlRs_Print: what the screens call to print. Every job goes to PrintOutput: the preview, or the PDF
// path of a program without windows.

// A grid as a paged list: its visible columns with their captions and widths, the title, the item
// pairs (name, value, name, value ...) and the company's items as the heading. A null grid prints
// nothing. `listHeading` false prints the table without the heading's items.
void PrintGrid(QStringList items, ZqGrid* grid, const QString& title, const QString& text = {},
               bool listHeading = true);
// A tree as an indented outline of its node texts. A null tree prints nothing.
void PrintTreeView(QTreeWidget* tree, const QString& title);
// A text under a title, its lines wrapped to the page.
void PrintText(const QString& title, const QString& text);

// Person cards through a stored template: every person of tRsBasic the filter (a condition, or empty
// for all) selects, in code order, one to a card. `mode` is 3 for the supervisor, else 1. No person
// shows the message of id 148 and prints nothing.
void PrintPersonCard(qint16 mode, const QString& templateKey, const QString& sheetKey, const QString& filter);
// The same with the other particulars of tRsDetail. `filter` is either a condition on tRsBasic or a
// whole statement of its own (beginning with "select") that joins tRsDetail.
void PrintPersonCardDetail(qint16 mode, const QString& templateKey, const QString& sheetKey,
                           const QString& filter);
// The 30 newest reports the filter selects, one to a page. `fields` is the field collection the
// screen hands over (caption and field in turn); empty gives the report's own main fields.
void PrintReportFlow(qint16 mode, const QString& templateKey, const QString& sheetKey, const QString& filter,
                     const QStringList& fields = {});

// The field collection of a person table: caption (in the language in use) and field name in turn, in
// the dictionary's order; for tRsBasic ends with "员工照片", "fPhoto".
QStringList personFieldCollection();
QStringList detailFieldCollection();

// Prints the rows of a statement through a stored layout, one record a card. With no rows: the message
// of id 148 and false. False also when cancelled.
bool PrintRecords(const QString& templateKey, const QString& sheetKey, const QString& sql,
                  const QStringList& fields);

// What PrintGrid and PrintTreeView print of their widgets.
TableData tableOfGrid(const ZqGrid& grid);
TableData tableOfTree(const QTreeWidget& tree);

} // namespace zq
