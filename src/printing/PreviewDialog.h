#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class QScrollArea;

namespace zq {

class PrintDocument;

// The print preview: one page at a time, zoomed, paged through with the buttons or Page Up/Down;
// from here the user prints (choosing the printer) or saves the document as a PDF.
class PreviewDialog : public QDialog {
    Q_OBJECT
public:
    explicit PreviewDialog(const PrintDocument& doc, QWidget* parent = nullptr);

    // 0-based page shown.
    int page() const { return m_page; }
    void setPage(int page);
    // Zoom as a factor of the paper's real size; 0 fits the width, -1 the whole page.
    double zoom() const { return m_zoom; }
    void setZoom(double zoom);

    // The two ways out with paper: false when cancelled or when nothing was written.
    bool printDocument();
    bool savePdf();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    // Fitted zooms follow the size of the window.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void render();
    double effectiveZoom() const;

    const PrintDocument& m_doc;
    int m_page = 0;
    double m_zoom = 0;
    QComboBox* m_cboZoom;
    QLabel* m_lblPage;
    QLabel* m_picPage;
    QScrollArea* m_scroll;
    QPushButton* m_cmdFirst;
    QPushButton* m_cmdPrev;
    QPushButton* m_cmdNext;
    QPushButton* m_cmdLast;
};

} // namespace zq
