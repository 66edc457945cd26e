#pragma once

#include <QDialog>
#include <QVector>

#include <functional>

class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QChartView;

namespace zq {

class ZqGrid;

// "人事统计查询": persons listed under a filter of state, department and one field's value or
// range, or under a compound condition; and counted by the distinct values of chosen fields, with
// a chart of each counted field.
class frmRs_PersonList : public QDialog {
    Q_OBJECT
public:
    explicit frmRs_PersonList(QWidget* parent = nullptr);

    ZqGrid* grid1() const { return m_grid1; }
    ZqGrid* grid2() const { return m_grid2; }
    QChartView* chart() const { return m_chartView; }
    // The counts of the charted field read down, with the share of each and the total at the foot.
    ZqGrid* totals() const { return m_gridTotals; }
    // The line under the buttons that tells what the last query did not use.
    QString status() const;
    // The filter of the present choices (the value box may be rewritten).
    QString composeFilter();
    // Handlers, public so that tests drive them as the clerk would.
    void runQuery();
    void CmdQuiry_Click();
    void cmdSeek_Click();
    void CmdListSelect_Click();
    void cmdCompile_Click();
    void cmdCompileOK_Click();
    void cmdPrint_Click();
    void cmdCardPnt_Click();
    void moveItems(bool toSelected, bool all);
    void drawChart();
    bool saveChart(const QString& file);

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    void load();
    void runList(const QString& filter);
    int state() const;
    void guarded(const std::function<void()>& f);

    bool m_loaded = false;
    QString m_fields;
    QStringList m_seekFields;
    QVector<QStringList> m_counts; // Grid2's rows, decoded
    QComboBox* m_cboZT;
    QComboBox* m_combo1;
    QComboBox* m_combo2;
    QLineEdit* m_txtFilter;
    QLabel* m_txtQty;
    QStackedWidget* m_views;
    ZqGrid* m_grid1;
    QWidget* m_countPage;
    ZqGrid* m_grid2;
    QComboBox* m_chartField;
    QCheckBox* m_pie;
    QChartView* m_chartView;
    ZqGrid* m_gridTotals;
    QLabel* m_lblStatus;
    QFrame* m_picture2;
    QListWidget* m_lstAll;
    QListWidget* m_lstSelect;
};

} // namespace zq
