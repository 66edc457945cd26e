#include "frmRs_PersonResume.h"

#include <QPushButton>

namespace zq {

frmRs_PersonResume::frmRs_PersonResume(QWidget* parent)
    : PersonRecordScreen(QStringLiteral("工作简历"), parent)
    , m_cmdzy(new QPushButton(QStringLiteral("..."), this)) {
    setObjectName(QStringLiteral("frmRs_PersonResume"));
    addTypedGrids(QStringLiteral("tRsWork"), QStringLiteral("fYear,fbm,fRz,fWk,newbm,fType"),
                  {{"fYear", QStringLiteral("起止年月"), 17, 30},
                   {"fBm", QStringLiteral("工作单位"), 11, 60},
                   {"fRz", QStringLiteral("任职"), 11, 20},
                   {"fWk", QStringLiteral("所从事工作"), 17, 40},
                   {"newbm", QString(), 0, 30, true}},
                  {{"fYear", QStringLiteral("起止年月"), 17, 30},
                   {"fBm", QStringLiteral("所属部门"), 11, 40},
                   {"fRz", QStringLiteral("任职"), 8.5, 20},
                   {"fWk", QStringLiteral("所从事工作"), 8.5, 40},
                   {"newbm", QStringLiteral("调往部门"), 11, 30}},
                  QStringLiteral("应聘前工作简历"), QStringLiteral("应聘后工作简历"));
    m_cmdzy->setObjectName(QStringLiteral("Cmdzy"));
    m_cmdzy->setVisible(m_pickDepartment);
}

} // namespace zq
