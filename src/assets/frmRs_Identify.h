#pragma once

#include "assets/SeekEntryScreen.h"
#include "shell/Recordset.h"

namespace zq {

// "持证管理": the certificates persons hold, with issuer, dates and what the training cost.
class frmRs_Identify : public SeekEntryScreen {
    Q_OBJECT

public:
    explicit frmRs_Identify(QWidget* parent = nullptr);
    void cmdOk_Click() override;

protected:
    void load() override;
    QString modelKey() const override { return QStringLiteral("mnuRsOthHoldCard"); }
    QString table() const override { return QStringLiteral("trscard"); }
    const QStringList& fields() const override;
    QString seekSql() override;
    int rowLimit() const override { return 500; }
    void fillGrid(Recordset& rs) override;
    void startAdding() override;
    bool startChanging() override;
    void deleteActive() override;
    bool prepareSeek() override;
    bool servingOnlyLookup() const override { return true; }
    void keyLabelRightClick() override;
    QString entryLeft(int index) override;
    QString quoteMessage() const override { return QStringLiteral(" 您输入了单引号,请删除！"); }
    int quoteStyle() const override { return 48; }

private:
    QString m_fields;
    QVector<RowSnapshot> m_rowsRead; // each grid row's certificate as the search read it
    RowSnapshot m_loadedRow;         // the certificate in the panel, when changing
};

} // namespace zq
