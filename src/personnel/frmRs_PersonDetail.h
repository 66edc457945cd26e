#pragma once

#include "PersonRecordScreen.h"
#include "shell/Recordset.h"

namespace zq {

// "其它资料": the person's four extra fields, captioned by the dictionary, in a grid of caption
// and text. Not a grid of rows: one row of tRsDetail at most.
class frmRs_PersonDetail : public PersonRecordScreen {
    Q_OBJECT
public:
    explicit frmRs_PersonDetail(QWidget* parent = nullptr);

    ZqGrid* grid() const { return m_grid; }

protected:
    void load() override;
    void save() override;
    void printPart(int part) override;

private:
    RowSnapshot m_detailLoaded;
    ZqGrid* m_grid;
    QLabel* m_title;
};

} // namespace zq
