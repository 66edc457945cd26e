#include "frmRs_PersonResult.h"

namespace zq {

frmRs_PersonResult::frmRs_PersonResult(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("主要业绩"), parent) {
    setObjectName(QStringLiteral("frmRs_PersonResult"));
    const QString results = QStringLiteral("主要业绩"), pay = QStringLiteral("调薪历史");
    addGrid(SubGrid(QStringLiteral("tRsResult"), QStringLiteral("fYear,fyj"), {},
                    {{"fYear", QStringLiteral("年月"), 17, 30}, {"fyj", QStringLiteral("业绩"), 39.4, 60}},
                    true, results),
            QStringLiteral("Grid1"), QStringLiteral("Label1(4)"));
    addGrid(SubGrid(QStringLiteral("tRsTech"), QStringLiteral("fjs,fjn,fBz,fsm"), {},
                    {{"fJs", QStringLiteral("调薪日期"), 12, 60},
                     {"fJn", QStringLiteral("原 薪"), 16, 20},
                     {"fBz", QStringLiteral("新  薪"), 16, 20},
                     {"fSm", QStringLiteral("调薪率"), 12.1, 20}},
                    true, pay),
            QStringLiteral("Grid2"), QStringLiteral("Label1(0)"));
}

} // namespace zq
