#pragma once

#include "services/ui/CodeTreeScreen.h"

namespace zq {

// "企业辞典": the company's own dictionary, a tree of classes and entries each with a text.
class frmWd_dict : public CodeTreeScreen {
    Q_OBJECT

public:
    explicit frmWd_dict(QWidget* parent = nullptr);

protected:
    void load() override;
    void buildTree() override;
    void showRecord(const RowSnapshot& row) override;
    QVector<FieldValue> entryValues() const override;
    void kindChanged() override;
    void afterSave() override;
    void chkNoListCode_Click() override;

private:
    QLineEdit* m_txtNumber;
    bool m_codesAfterSave = false;
};

} // namespace zq
