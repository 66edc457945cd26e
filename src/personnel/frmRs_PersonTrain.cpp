#include "frmRs_PersonTrain.h"

namespace zq {

frmRs_PersonTrain::frmRs_PersonTrain(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("受训情况"), parent) {
    setObjectName(QStringLiteral("frmRs_PersonTrain"));
    const auto columns = [](const QString& subject) {
        return QVector<SubColumn>{{"fYear", QStringLiteral("起止年月"), 17, 30},
                                  {"fXx", QStringLiteral("学校"), 19, 40},
                                  {"fZy", subject, 20.2, 20}};
    };
    addTypedGrids(QStringLiteral("tRsStudy"), QStringLiteral("fYear,fXx,fzy,fType"),
                  columns(QStringLiteral("学习专业")), columns(QStringLiteral("所学专业")),
                  QStringLiteral("应聘前学习及受训情况"), QStringLiteral("受聘后受训情况"));
}

} // namespace zq
