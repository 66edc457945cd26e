#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;

namespace zq {

// "项目设置": renames one field's caption in the dictionary and, where the field allows it, sets
// its brief list. The answer goes back through RptSetResult: the new caption, or the old one after
// a cancel, so that callers compare it with what they show.
class frmRs_RptSet : public QDialog {
    Q_OBJECT
    Q_PROPERTY(QString TabelName MEMBER m_tabelName)
    Q_PROPERTY(qint16 ItemEnable MEMBER m_itemEnable)
    Q_PROPERTY(QString Field MEMBER m_field)
    Q_PROPERTY(QString ModelName MEMBER m_modelName)

public:
    explicit frmRs_RptSet(QWidget* parent = nullptr);

    // The load steps; run on the first show, so that the settings are assigned before.
    void load();

    void cmdOK_Click();
    void cmdCancel_Click();
    void Command3_Click();

protected:
    void showEvent(QShowEvent* event) override;
    void reject() override;

private:
    QString m_tabelName;
    qint16 m_itemEnable = 0;
    QString m_field;
    QString m_modelName;
    bool m_loaded = false;

    QLineEdit* m_txtName;
    QLineEdit* m_txtItemNo;
    QLabel* m_label1;
    QPushButton* m_command3;
    QPushButton* m_cmdOK;
};

} // namespace zq
