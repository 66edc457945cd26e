#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;

namespace zq {

// "[其它资料]查询": a search of the staff register by the extra fields. FilterString, read by the
// register as the screen closes, is a condition on the alias b of tRsDetail; empty when cancelled.
class frmRs_PersonDetailSeek : public QDialog {
    Q_OBJECT
    Q_PROPERTY(QString FilterString MEMBER m_filter)
public:
    explicit frmRs_PersonDetailSeek(QWidget* parent = nullptr);

    QString filterString() const { return m_filter; }
    QCheckBox* check1(int i) const { return m_check[i]; }
    QLineEdit* text1(int i) const { return m_text[i]; }
    void cmdOK_Click();
    void cmdCancel_Click();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool m_loaded = false;
    QString m_filter;
    QCheckBox* m_check[4] = {};
    QLineEdit* m_text[4] = {};
};

} // namespace zq
