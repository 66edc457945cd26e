#pragma once

#include <QDialog>
#include <QPoint>

class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;

namespace zq {

class SheetDocument;

// "个人简历": the personal record sheet of the person in hand (CurPersonCode when the screen loads),
// previewed one side at a time, printed, or saved as a PDF.
class frmRs_PersonPnt : public QDialog {
    Q_OBJECT

public:
    explicit frmRs_PersonPnt(QWidget* parent = nullptr);
    ~frmRs_PersonPnt() override;

    // The sides the next drawing shows: 0 both, 1 the front, 2 the back.
    int PrintPage = 0;

    void load();
    void cmdPreview_Click();
    // False when nothing was printed (no printer, or a printer failure).
    bool cmdPrint_Click();
    bool cmdPdf_Click();
    // Copies asked for in TxtMany, at least one.
    int copies() const;
    const QString& personCode() const { return m_code; }
    // The status line under the page: what of the previewed side does not fit its cell.
    QString status() const;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The sheet to draw: the blank form when ChkPai is set, else the screen's person.
    SheetDocument sheet(int sides, int copies) const;
    // Tells the user of values the paper could not hold whole; nothing when all fit.
    void warnMisfits(const SheetDocument& doc);

    bool m_loaded = false;
    QString m_code;
    QPoint m_dragFrom;
    QRadioButton* m_optPaper[3];
    QLineEdit* m_txtMany;
    QCheckBox* m_chkPai;
    QWidget* m_picture2;
    QLabel* m_picPaper;
    QLabel* m_lblStatus;
};

} // namespace zq
