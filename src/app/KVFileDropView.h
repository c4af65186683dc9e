#pragma once

#include "app/KVDropContents.h"

#include <QColor>
#include <QStringList>
#include <QWidget>

class QMimeData;

namespace tintorra {

class KVFileDropView;

// Decides what a drop view does with what it receives. The view's registration helpers
// (dataMatchesRegistration, readFileUrls, readDroppedImages) are there for delegates that want
// the view's own idea of files, folders and images.
class KVFileDropDelegate {
public:
    virtual ~KVFileDropDelegate() = default;
    virtual bool dropViewCanTakeData(KVFileDropView* view, const QMimeData* data) = 0;
    virtual void dropViewTakeData(KVFileDropView* view, const QMimeData* data) = 0;
};

// A place to drop files, folders or images on (or paste them into): a dashed rounded frame with
// an arrow and a prompt such as "Drop an image here", drawn red while an acceptable drag is over
// it. What was dropped goes to the drop delegate.
class KVFileDropView : public QWidget {
    Q_OBJECT

public:
    explicit KVFileDropView(QWidget* parent = nullptr);
    ~KVFileDropView() override;

    // Each registration replaces the one before and sets the prompt for it.
    void registerForDraggedFiles();
    void registerForDraggedFolders();
    void registerForDraggedFilesAndFolders();
    void registerForDraggedImages();
    void setAcceptableDragTypes(const QStringList& mimeTypes);
    KVDropRegistration registeredTypes() const { return registeredTypes_; }
    QStringList acceptableDragTypes() const { return acceptableDragTypes_; }

    // The most items one drag may bring; the prompt follows (singular for 1).
    void setAcceptableDragCount(int count);
    int acceptableDragCount() const { return acceptableDragCount_; }

    void setMessage(const QString& message);
    QString message() const { return message_; }
    void setShowBorder(bool show);
    void setShowArrow(bool show);
    void setFlipArrow(bool flip);
    void setDrawMessageShadow(bool draw);
    void setAcceptsDrop(bool accepts);
    bool acceptsDrop() const { return acceptsDrop_; }
    void setPrimaryColor(const QColor& colour);
    void setBackgroundColor(const QColor& colour); // invalid: no fill
    void setDropDelegate(KVFileDropDelegate* delegate) { dropDelegate_ = delegate; }
    KVFileDropDelegate* dropDelegate() const { return dropDelegate_; }
    bool dragInProgress() const { return dragInProgress_; }

    // The delegate's answer, or without a delegate the registration's.
    bool canTakeDataFromPasteboard(const QMimeData* data);
    // Hands the data to the delegate; a custom registration without one beeps.
    void takeDataFromPasteboard(const QMimeData* data);

    // Paste: enabled only when the clipboard holds something the view takes.
    bool canPaste();
public slots:
    void paste();

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    // The frame, arrow and prompt over the whole view.
    void paintDropPrompt(QPainter& painter) const;
    void setDragInProgress(bool inProgress);

private:
    void registerFor(KVDropRegistration registration);

    KVFileDropDelegate* dropDelegate_ = nullptr;
    bool acceptsDrop_ = true;
    bool dragInProgress_ = false;
    QString message_;
    bool showArrow_ = true;
    bool flipArrow_ = false;
    bool showBorder_ = true;
    bool drawMessageShadow_ = true;
    QColor primaryColor_{64, 64, 64};
    QColor backgroundColor_;
    QStringList acceptableDragTypes_;
    int acceptableDragCount_ = 1;
    KVDropRegistration registeredTypes_ = KVDropRegistration::custom;
};

} // namespace tintorra
