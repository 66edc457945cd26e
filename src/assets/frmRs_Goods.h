#pragma once

#include "assets/SeekEntryScreen.h"
#include "shell/Recordset.h"

namespace zq {

// "借领用工具设备" / "借领用行政物品": what a person has taken out and when it came back, one of two
// tables of the same shape chosen by State.
class frmRs_Goods : public SeekEntryScreen {
    Q_OBJECT
    Q_PROPERTY(int State READ state WRITE setState)

public:
    explicit frmRs_Goods(QWidget* parent = nullptr);
    int state() const { return m_state; }
    void setState(int state) { m_state = state; }
    QString myFields() const { return m_fields; }
    void cmdOk_Click() override;

protected:
    void load() override;
    QString modelKey() const override;
    QString table() const override;
    const QStringList& fields() const override;
    bool seekPaged(PagedQuery& query) override;
    int rowLimit() const override { return 100; }
    void startAdding() override;
    bool startChanging() override;
    void deleteActive() override;
    bool prepareSeek() override;
    QString entryLeft(int index) override;
    void entryEnter(int index) override;
    void entryFocused(int index) override;
    QString quoteMessage() const override { return QStringLiteral("您不能输入单引号,请删除!"); }
    int quoteStyle() const override { return 64; }

private:
    QString activeKey() const;
    void formatMoney(int index);

    int m_state = 1;
    QString m_fields;
    QString m_key; // the row in hand
    RowSnapshot m_loadedRow;
};

} // namespace zq
