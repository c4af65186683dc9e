// Lays out the welcome tour's pages and writes them as a PDF:
//   tintorra-welcome-pdf OUTPUT.pdf
// The pictures come from the program's own controls and engine (WelcomeIllustrations), so the
// tour shows what the program shows. Run at build time on the offscreen platform.
#include "tools/WelcomeIllustrations.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <cstdio>

namespace {

using tintorra::WelcomeIllustrations;

// Pages in points, landscape; the tour window shows one at its natural size.
constexpr qreal kPageWidth = 576;
constexpr qreal kPageHeight = 384;
constexpr qreal kMargin = 36;

const QColor kInk(0x22, 0x22, 0x22);
const QColor kQuiet(0x5c, 0x5c, 0x5c);
const QColor kAccent(0x2a, 0x6f, 0xdb);
const QColor kRule(0xdd, 0xdd, 0xdd);

class PageWriter {
public:
    explicit PageWriter(QPdfWriter& writer) : writer_(writer), painter_(&writer)
    {
        painter_.setRenderHint(QPainter::Antialiasing);
        painter_.setRenderHint(QPainter::TextAntialiasing);
        painter_.setRenderHint(QPainter::SmoothPixmapTransform);
    }

    QPainter& painter() { return painter_; }

    // Starts a page with its title and a short line under it; returns the top of the body.
    qreal beginPage(const QString& title, const QString& subtitle)
    {
        if (pages_++ > 0) {
            writer_.newPage();
        }
        painter_.fillRect(QRectF(0, 0, kPageWidth, 6), kAccent);
        QFont font = sans(22, QFont::DemiBold);
        painter_.setFont(font);
        painter_.setPen(kInk);
        painter_.drawText(QRectF(kMargin, 26, kPageWidth - 2 * kMargin, 30),
                          Qt::AlignLeft | Qt::AlignVCenter, title);
        painter_.setFont(sans(11));
        painter_.setPen(kQuiet);
        painter_.drawText(QRectF(kMargin, 56, kPageWidth - 2 * kMargin, 18),
                          Qt::AlignLeft | Qt::AlignVCenter, subtitle);
        painter_.setPen(QPen(kRule, 0.75));
        painter_.drawLine(QPointF(kMargin, 82), QPointF(kPageWidth - kMargin, 82));
        return 96;
    }

    // Wrapped text in a box; returns the height it took.
    qreal paragraph(const QRectF& box, const QString& text, qreal size = 10.5,
                    const QColor& colour = kInk)
    {
        painter_.setFont(sans(size));
        painter_.setPen(colour);
        QRectF used;
        painter_.drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, text, &used);
        return used.height();
    }

    // Numbered or bulleted points, each with a bold lead-in; returns the bottom.
    qreal points(qreal left, qreal top, qreal width, const QList<QPair<QString, QString>>& items,
                 bool numbered)
    {
        qreal y = top;
        int number = 1;
        for (const auto& [lead, text] : items) {
            const QRectF marker(left, y + 1, 16, 16);
            painter_.setPen(Qt::NoPen);
            painter_.setBrush(kAccent);
            if (numbered) {
                painter_.drawEllipse(marker);
                painter_.setPen(Qt::white);
                painter_.setFont(sans(9, QFont::Bold));
                painter_.drawText(marker, Qt::AlignCenter, QString::number(number++));
            } else {
                painter_.drawEllipse(QRectF(left + 5, y + 6, 6, 6));
            }
            painter_.setBrush(Qt::NoBrush);
            painter_.setPen(kInk);
            painter_.setFont(sans(10.5, QFont::DemiBold));
            painter_.drawText(QRectF(left + 24, y, width - 24, 16), Qt::AlignLeft | Qt::AlignTop,
                              lead);
            y += 15 + paragraph(QRectF(left + 24, y + 15, width - 24, 200), text, 9.5, kQuiet);
            y += 9;
        }
        return y;
    }

    void picture(const QRectF& box, const QImage& image, bool framed = false)
    {
        painter_.drawImage(box, image);
        if (framed) {
            painter_.setPen(QPen(kRule, 0.75));
            painter_.setBrush(Qt::NoBrush);
            painter_.drawRect(box);
        }
    }

    void picture(const QPointF& at, const QPixmap& pixmap)
    {
        painter_.drawPixmap(QRectF(at, pixmap.deviceIndependentSize()), pixmap,
                            QRectF(pixmap.rect()));
    }

    void caption(const QRectF& box, const QString& text)
    {
        painter_.setFont(sans(8.5));
        painter_.setPen(kQuiet);
        painter_.drawText(box, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, text);
    }

    // A thin line from a label to the thing it names, ending in a dot.
    void callout(const QPointF& from, const QPointF& to, const QString& label, bool labelLeft)
    {
        painter_.setPen(QPen(kAccent, 0.9));
        painter_.drawLine(from, to);
        painter_.setBrush(kAccent);
        painter_.drawEllipse(to, 2.2, 2.2);
        painter_.setBrush(Qt::NoBrush);
        painter_.setFont(sans(8.5));
        painter_.setPen(kInk);
        const qreal width = 120;
        const QRectF box(labelLeft ? from.x() - width - 4 : from.x() + 4, from.y() - 12, width, 24);
        painter_.drawText(
            box, (labelLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter | Qt::TextWordWrap,
            label);
    }

    static QFont sans(qreal points, QFont::Weight weight = QFont::Normal)
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setStyleHint(QFont::SansSerif);
        font.setPointSizeF(points);
        font.setWeight(weight);
        return font;
    }

private:
    QPdfWriter& writer_;
    QPainter painter_;
    int pages_ = 0;
};

void introduction(PageWriter& page, const WelcomeIllustrations& art)
{
    const qreal top =
        page.beginPage(QObject::tr("Welcome to Tintorra"),
                       QObject::tr("Recolour part of a photograph, and nothing else"));
    page.picture(QRectF(kMargin, top + 8, 200, 200), art.sourceImage());
    const qreal left = kMargin + 224;
    const qreal width = kPageWidth - kMargin - left;
    const qreal used = page.paragraph(
        QRectF(left, top + 4, width, 80),
        QObject::tr("Tintorra moves a range of hues in an image towards a new hue and can change "
                    "their saturation and brightness. Everything else stays exactly as it was, "
                    "and every new colour stays inside the image's own RGB colour space."));
    page.points(left, top + used + 18, width,
                {{QObject::tr("Open a photograph"),
                  QObject::tr("Drop an image on the window or use File \u25b8 Open.")},
                 {QObject::tr("Select the colours to change"),
                  QObject::tr("With the hue ring, the ranges, the eyedropper or the spectrogram.")},
                 {QObject::tr("Choose where they go"),
                  QObject::tr("A target hue, a saturation change and a brightness curve.")},
                 {QObject::tr("Save or export"),
                  QObject::tr("A Tintorra document keeps everything for later.")}},
                true);
}

void selectingColours(PageWriter& page, const WelcomeIllustrations& art)
{
    const qreal top = page.beginPage(QObject::tr("Choose the colours to change"),
                                     QObject::tr("The selection's hue ring and its two ranges"));
    const int side = 176;
    // Centred on the left of the ring, so that the thumbs face their labels.
    const double middle = 0.5;
    const tintorra::KVSliderValues range{middle + 0.1, middle + 0.05, middle, middle - 0.05,
                                         middle - 0.1};
    const QPointF ring(kMargin + 140, top + 8);
    page.picture(ring, art.selectionHueRing(side, range));
    const auto thumbs = art.selectionThumbs(side, range);
    const qreal labelX = kMargin + 124;
    const qreal centreY = ring.y() + side / 2.0;
    page.callout(QPointF(labelX, centreY - 40), ring + thumbs[0],
                 QObject::tr("The middle thumb moves the whole range"), true);
    page.callout(QPointF(labelX, centreY + 22), ring + thumbs[1],
                 QObject::tr("Inner thumbs: fully selected hues"), true);
    page.callout(QPointF(labelX, centreY + 76), ring + thumbs[2],
                 QObject::tr("Outer thumbs: the soft fall-off"), true);

    const QPointF slider(ring.x(), top + side + 18);
    page.picture(slider, art.saturationSlider(QSize(side, 30)));
    page.caption(QRectF(slider.x() - 20, slider.y() + 32, side + 40, 24),
                 QObject::tr("Saturation and brightness ranges narrow the selection"));

    const qreal left = kMargin + 336;
    page.points(left, top + 4, kPageWidth - kMargin - left,
                {{QObject::tr("Drag the thumbs"),
                  QObject::tr("The result follows as you drag; one drag is one undo step.")},
                 {QObject::tr("Pick from the image"),
                  QObject::tr("Click a colour in the image with the eyedropper to centre the "
                              "range on it.")},
                 {QObject::tr("Type exact values"),
                  QObject::tr("Type a hue in the middle of the ring; the ring's context menu "
                              "resets it.")}},
                false);
}

void choosingTheTarget(PageWriter& page, const WelcomeIllustrations& art)
{
    const qreal top =
        page.beginPage(QObject::tr("Set the target"), QObject::tr("Where the selected colours go"));
    const int side = 140;
    const qreal gap = 22;
    page.picture(QPointF(kMargin, top + 4), art.targetHueRing(side));
    page.caption(QRectF(kMargin - 10, top + side + 10, side + 20, 30),
                 QObject::tr("The target hue: drag its thumb"));

    const qreal before = kMargin + side + 2 * gap;
    const qreal after = before + side + gap;
    page.picture(QRectF(before, top + 4, side, side), art.sourceImage(), true);
    page.picture(QRectF(after, top + 4, side, side), art.shiftedImage(), true);
    page.caption(QRectF(before, top + side + 10, side, 20), QObject::tr("Before"));
    page.caption(QRectF(after, top + side + 10, side, 20),
                 QObject::tr("After: the blues turned orange"));

    const qreal row = top + side + 44;
    page.picture(QPointF(kMargin, row), art.brightnessCurve(QSize(side, 34)));
    page.caption(QRectF(kMargin - 10, row + 40, side + 20, 40),
                 QObject::tr("The brightness curve: eleven thumbs from dark to light"));
    page.paragraph(QRectF(before, row - 2, after + side - before, 100),
                   QObject::tr("Selected colours move towards the target hue by as much as they "
                               "are selected, so the fall-offs blend into the colours left alone. "
                               "Saturation is measured against the most the colour space allows "
                               "at each hue and lightness, so no new colour is clipped."),
                   9.5, kQuiet);
}

void masksAndSpectrogram(PageWriter& page, const WelcomeIllustrations& art)
{
    const qreal top = page.beginPage(QObject::tr("See what is selected"),
                                     QObject::tr("Masks and the spectrogram"));
    const qreal imageSide = 112;
    const QRectF mask(kMargin, top + 4, imageSide, imageSide);
    // The mask view is opaque: black where nothing is selected, the icon's empty corners too.
    page.painter().fillRect(mask, Qt::black);
    page.picture(mask, art.maskImage());
    page.caption(QRectF(kMargin - 10, top + imageSide + 8, imageSide + 20, 30),
                 QObject::tr("The black mask: what is selected shows white"));
    const qreal textLeft = kMargin + imageSide + 20;
    page.paragraph(QRectF(textLeft, top + 2, kPageWidth - kMargin - textLeft, 140),
                   QObject::tr("The View menu shows the result, a highlight of the selection, or "
                               "the selection as a black or a white mask. Paint with the brush to "
                               "keep parts of the image out of the selection.\n\nThe spectrogram "
                               "below draws the image's colours by hue. Click a band to centre "
                               "the selection on its hue; Ctrl-click shows the next graph and "
                               "Alt-click the other scale."),
                   9.5, kQuiet);
    const QSize spectrum(int(kPageWidth - 2 * kMargin), 112);
    page.picture(QPointF(kMargin, top + imageSide + 44), art.spectrogram(spectrum));
}

// A stack of cards standing for the pages of a document.
void documentStack(PageWriter& page, const WelcomeIllustrations& art, const QPointF& at)
{
    QPainter& p = page.painter();
    const QList<QPair<QString, QImage>> cards = {{QObject::tr("Settings"), QImage()},
                                                 {QObject::tr("Masks"), art.maskImage()},
                                                 {QObject::tr("Source"), art.sourceImage()},
                                                 {QObject::tr("Result"), art.shiftedImage()}};
    const QSizeF card(118, 136);
    for (int i = 0; i < cards.size(); ++i) {
        const QRectF box(at + QPointF(i * 26, (cards.size() - 1 - i) * 20), card);
        p.setPen(QPen(QColor(0xb8, 0xb8, 0xb8), 0.75));
        p.setBrush(Qt::white);
        p.drawRoundedRect(box, 4, 4);
        const QRectF picture = box.adjusted(10, 10, -10, -26);
        if (cards[i].second.isNull()) {
            p.setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 6));
            p.setPen(kQuiet);
            p.drawText(picture, Qt::TextWrapAnywhere, art.parameterString().left(120));
        } else {
            p.drawImage(QRectF(picture.center().x() - picture.height() / 2, picture.top(),
                               picture.height(), picture.height()),
                        cards[i].second);
        }
        p.setFont(PageWriter::sans(8.5, QFont::DemiBold));
        p.setPen(kInk);
        p.drawText(QRectF(box.left(), box.bottom() - 22, box.width(), 18), Qt::AlignCenter,
                   cards[i].first);
    }
}

void savingYourWork(PageWriter& page, const WelcomeIllustrations& art)
{
    const qreal top = page.beginPage(QObject::tr("Save your work"),
                                     QObject::tr("Documents, exports and the clipboard"));
    documentStack(page, art, QPointF(kMargin, top + 6));
    const qreal left = kMargin + 210;
    page.points(left, top + 4, kPageWidth - kMargin - left,
                {{QObject::tr("Save a Tintorra document"),
                  QObject::tr("One TIFF file holds the result, the source, the masks and every "
                              "setting. Open it again to carry on where you stopped; other "
                              "programs see the result.")},
                 {QObject::tr("Save the result alone"),
                  QObject::tr("Save As writes just the shifted image as TIFF, PNG, JPEG or "
                              "JPEG 2000.")},
                 {QObject::tr("Copy or drag out"),
                  QObject::tr("Copy the result, or drag it from the window into another "
                              "program or a folder.")},
                 {QObject::tr("Find this tour again"),
                  QObject::tr("Help \u25b8 Welcome to Tintorra. Close it now with Close.")}},
                false);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 2 || argv[1][0] == '-') {
        std::fprintf(stderr, "usage: tintorra-welcome-pdf OUTPUT.pdf\n");
        return 2;
    }
    const WelcomeIllustrations art;
    QPdfWriter writer(QString::fromLocal8Bit(argv[1]));
    writer.setTitle(QStringLiteral("Welcome to Tintorra"));
    writer.setCreator(QStringLiteral("Tintorra"));
    writer.setResolution(72);
    writer.setPageSize(QPageSize(QSizeF(kPageWidth, kPageHeight), QPageSize::Point));
    writer.setPageMargins(QMarginsF());
    {
        PageWriter page(writer);
        introduction(page, art);
        selectingColours(page, art);
        choosingTheTarget(page, art);
        masksAndSpectrogram(page, art);
        savingYourWork(page, art);
        if (!page.painter().isActive()) {
            std::fprintf(stderr, "tintorra-welcome-pdf: %s could not be written\n", argv[1]);
            return 1;
        }
    }
    return 0;
}
