#pragma once

#include "services/ui/CodeTreeScreen.h"

namespace zq {

class ArchiveFind;

// "文档查询": the archive read-only, by department: the department tree with each department's
// documents hung under it. A State between 1 and the number of classes shows that class only.
class frmWd_DeptDict : public CodeTreeScreen {
    Q_OBJECT

public:
    explicit frmWd_DeptDict(QWidget* parent = nullptr);

protected:
    void load() override;
    void buildTree() override;
    void nodeChosen(QTreeWidgetItem* node) override;
    void rootChosen() override;

private:
    void hangDocuments();
    QString classCode() const;

    ArchiveFind* m_find;
};

} // namespace zq
