#pragma once

#include <QFrame>
#include <QPointer>

namespace tintorra {

// A pop-up panel that hangs below the button that opened it and closes when the user clicks
// elsewhere or presses Escape. It shows one content widget, which it holds while open.
class KVPopupFrame : public QFrame {
    Q_OBJECT

public:
    explicit KVPopupFrame(QWidget* parent = nullptr);

    void setContent(QWidget* content);
    QWidget* content() const { return content_; }
    // Opens under `anchor`, kept on the anchor's screen.
    void showBelow(QWidget* anchor);

signals:
    void closed();

protected:
    void hideEvent(QHideEvent* event) override;

private:
    QPointer<QWidget> content_;
};

} // namespace tintorra
