#pragma once

#include "controls/KVHueShiftParameterSet.h"
#include "editor/LiveShifter.h"
#include "engine/Engine.h"
#include "ui/KVLChSpectrumView.h"

#include <QColor>
#include <QPointer>
#include <QWidget>
#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <optional>
#include <thread>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QStackedWidget;
class QToolButton;
class QUndoStack;

namespace tintorra {

class KVCircularSlider;
class KVSavedSetsPopup;
class KVSelectionSetSaveSheet;
class KVTenSegmentSlider;
struct KVNotification;

// Tags of the five tool buttons, in their order.
enum KVToolTag : int {
    kToolSetSelectionHue = 1,
    kToolAddSelectionHue = 2,
    kToolSubtractSelectionHue = 3,
    kToolSetTargetHue = 4,
    kToolMaskPaintbrush = 5,
};

// The editing panel of a document window and its controller. It owns the parameter set and the
// sliders that edit it, keeps the document's source, masks and shifted result, and recomputes
// the result whenever a parameter changes. Every change goes on the undo stack under a readable
// name (a drag is one step); the image's gamut, colour table and spectrum are built on threads
// of their own, and shifts run on the live shifter, so the main thread never waits for image
// work: results arrive through queued calls and the newest one always wins.
class TintorraVC : public QWidget {
    Q_OBJECT

public:
    TintorraVC(Engine& engine, QUndoStack* undoStack, QWidget* parent = nullptr);
    ~TintorraVC() override;

    // Registers the defaults the panel reads: eighteen named-hue selection sets, no target sets,
    // saving as TIFF. Done once per process.
    static void registerDefaults();

    // [source, exclusion mask?, inclusion mask?]; an empty vector means "no image".
    void setImageReps(std::vector<KVBitmapPtr> reps);
    KVBitmapPtr sourceRep() const { return sourceRep_; }
    KVBitmapPtr exMaskRep() const { return exMaskRep_; }
    KVBitmapPtr inMaskRep() const { return inMaskRep_; }
    // The newest shifted result shown, or null.
    KVBitmapPtr destinationRep() const { return destinationRep_; }

    QString hexEncodedStringFromHueShiftParameters() const;
    // Applies the string's values through the setters as one undo step and recomputes once.
    bool setHueShiftParametersFromHexEncodedString(const QString& encoded);
    // While off, the setters record no undo steps (a document handing over its saved settings).
    // Calls nest: each "off" is matched by an "on".
    void setUndoRegistrationEnabled(bool enabled);

    int currentSelectionTool() const;
    int maskToShow() const { return static_cast<int>(parameters_.maskToShow()); }
    void setMaskToShow(int view);
    void setMaskToShow(MaskView view);
    QUndoStack* undoStack() const { return undoStack_; }
    KVLChSpectrumView* spectrumView() const { return spectrumView_; }
    std::vector<QColor> imageColors() const { return imageColors_; }

    KVBitmapPtr exclusionMaskForPainting();
    void setExclusionMask(KVBitmapPtr mask);

    // Image-point messages; pixel coordinates in `image`, the source image.
    void setSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image);
    void addSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image);
    void subtractSelectionHueSliderValue(QPoint pixel, const KVBitmapPtr& image);
    void setTargetHueSliderValue(QPoint pixel, const KVBitmapPtr& image);
    // (-1, -1) is outside the image.
    void mouseMovedOverImage(QPoint pixel, const KVBitmapPtr& image);
    // Prints everything known about the pixel to standard error.
    void debugImagePixel(QPoint pixel, const KVBitmapPtr& image);

    // --- The parameter set and its undoable setters ---------------------------------------------
    const KVHueShiftParameterSet& parameters() const { return parameters_; }
    void setTargetHue(double hue);
    void setTargetSat(double saturation);
    void setTargetBri(double brightness);
    void setTargetBriTenVals(const KVValueDictionary& values);
    void setSourceHueValues(const KVValueDictionary& values);
    void setSourceSatValues(const KVValueDictionary& values);
    void setSourceBriValues(const KVValueDictionary& values);
    // {"hue", "saturation", "lightness"} as range dictionaries; one undo step for all three.
    void setSelectionSettings(const QVariantMap& settings);
    void setTargetSettings(const QVariantMap& settings);
    void setDisplayGamma(double gamma);
    void setTargetColor(const QColor& color);
    QColor targetColor() const { return targetColor_; }
    void setPreserveHue(bool preserve);
    void setColorSpaceModel(ColorSpaceModel model);
    void setBlendToFalloffHues(bool blend);
    // Swaps the hue range for its complement.
    void invertSourceHueValues();

    QVariantMap dictionaryOfSelectionSettings() const;
    QVariantMap dictionaryOfTargetSettings() const;

    // --- Saved sets -----------------------------------------------------------------------------
    KVSavedSetsPopup* selectionSetsPopup() const { return selectionSetsPopup_; }
    KVSavedSetsPopup* targetSetsPopup() const { return targetSetsPopup_; }
    KVSelectionSetSaveSheet* selectionSetSaveSheet() const { return saveSheet_; }
    // The sheet's buttons: Save stores the current settings under the typed name unless it is
    // empty or taken (then only a beep, and the sheet stays); any other button cancels. Returns
    // whether the sheet closed.
    bool closeSelectionSetSaveSheet(bool saveButton);
    QStackedWidget* selectionTabView() const { return selectionTabView_; }

    // --- Processing -----------------------------------------------------------------------------
    bool isOkToProcessImage() const;
    // Asks for the shift of the current parameters; the result arrives through imageProcessed.
    void processImage();
    // While blocked, parameter changes do not recompute.
    void setBlockProcessing(bool block) { blockProcessing_ = block; }
    // The number of the newest shift asked for (0 before the first).
    std::uint64_t lastRequestedShift() const { return lastRequest_; }
    // The number of the shift whose result is shown (0 for none yet).
    std::uint64_t shownShift() const { return shownRequest_; }

    // --- Tools ----------------------------------------------------------------------------------
    QToolButton* toolButton(int tag) const;
    // What pressing a tool button does (the button's own state already toggled).
    void pressToolButton(int tag);
    void deselectSelectionTools();

    // The readout beside the image: row labels and three columns of values.
    QString pixelPropertiesHeader() const;
    QStringList pixelPropertiesColumns() const;
    QString sourceRepPropertiesHeader() const;
    QString sourceRepProperties() const;

    // The hovered value of a target slider, shown beside it; empty when the pointer left.
    QString targetHoverText() const;

    // The path a degree field's "value" binding names, as the arrow keys act on it:
    // "self.hueSlider.middleValue" -> "hueSlider.middleValue", the same for the target ring, the
    // part from "op_" on for operator paths; empty for any other path.
    static QString nudgeKeyPath(const QString& bindingKeyPath);

signals:
    void imageLoaded();
    // Main thread; null when no output.
    void imageProcessed(tintorra::KVBitmapPtr output);
    void processingStarted();
    void imageNeedsDisplay();
    void toolButtonPressed(int tag);
    void maskToShowChanged(int view);
    void imageColorsChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // One member's change: what undo restores and redo reapplies, as the setter stores them.
    template <typename Value, typename Apply>
    void changeParameter(const QString& actionName, int mergeKey, Value oldValue, Value newValue,
                         Apply apply);
    bool undoRegistrationEnabled() const { return undoSuspended_ == 0; }
    // A control's press-drag-release becomes one undo step under the control's action name.
    void beginUndoGroup(const QString& actionName);
    void endUndoGroup();
    void openPendingMacro();

    void applySourceRanges(const KVSliderValues& hue, const KVSliderValues& saturation,
                           const KVSliderValues& brightness);
    void applyTargetHue(double hue);
    void applyColorSpaceModel(ColorSpaceModel model);
    void applyDisplayGamma(double gamma);
    void applyTargetColor(const QColor& color, double hue);

    void buildPanel();
    void bindSliders();
    void observeNotifications();
    void showParametersInControls();
    void updateSourceSatAndBriSliderColors();
    void updateTargetSatAndBriSliderColors();
    void redrawSliders();

    // Background work: the gamut (when missing) and then the colour table and spectrum.
    void describeImageInBackground();
    void takeGamut(std::uint64_t generation, KVColorGamutPtr gamut);
    void takeColorTable(std::uint64_t generation, ColorTablePtr table, LChSpectrumPtr spectrum);
    void attemptToProcessImage();
    void takeShiftResult(std::uint64_t request, KVBitmapPtr result);
    void refreshImageColors();
    void fillImageInformation();
    void reapFinishedJobs();
    // A finished picture nobody holds any more, to be shifted into again; null when none.
    KVBitmapPtr reusableDestination() const;

    // The eyedroppers' hue of a pixel in the current colour mode.
    std::optional<double> hueOfPixel(QPoint pixel, const KVBitmapPtr& image) const;
    void addSelectionHue(double hue);
    void subtractSelectionHue(double hue);
    void spectrumClicked(const KVNotification& notification, bool add);
    void targetSliderHovered(const KVNotification& notification);

    void chooseSelectionSet(const QString& name, const QVariantMap& set);
    void chooseTargetSet(const QString& name, const QVariantMap& set);
    void openSaveSheet(KVSavedSetsPopup* popup);
    void openManageTab(KVSavedSetsPopup* popup);

    Engine& engine_;
    QUndoStack* undoStack_;
    KVHueShiftParameterSet parameters_;
    KVBitmapPtr sourceRep_;
    KVBitmapPtr exMaskRep_;
    KVBitmapPtr inMaskRep_;
    KVBitmapPtr destinationRep_;
    KVColorGamutPtr colorGamut_;
    ColorTablePtr colorTable_;
    LChSpectrumPtr spectrum_;
    std::vector<QColor> imageColors_;
    QColor targetColor_;
    bool blockProcessing_ = false;
    bool imageProcessed_ = false;

    int undoSuspended_ = 0;
    QString groupName_;
    int groupDepth_ = 0;
    bool macroOpen_ = false;
    // Changes within one group merge into one command per member.
    int groupSerial_ = 0;

    // Controls.
    KVCircularSlider* hueSlider_ = nullptr;
    KVCircularSlider* satSlider_ = nullptr;
    KVCircularSlider* briSlider_ = nullptr;
    KVCircularSlider* targetHueSlider_ = nullptr;
    KVCircularSlider* targetSatSlider_ = nullptr;
    KVCircularSlider* targetBriSlider_ = nullptr;
    KVTenSegmentSlider* targetTenBriSlider_ = nullptr;
    std::array<QToolButton*, 5> toolButtons_{};
    KVSavedSetsPopup* selectionSetsPopup_ = nullptr;
    KVSavedSetsPopup* targetSetsPopup_ = nullptr;
    QStackedWidget* selectionTabView_ = nullptr;
    QStackedWidget* targetBrightnessTabView_ = nullptr;
    KVSelectionSetSaveSheet* saveSheet_ = nullptr;
    // The popup whose sets the sheet or the manage tab are working on.
    KVSavedSetsPopup* setsPopupInUse_ = nullptr;
    QToolButton* targetColorWell_ = nullptr;
    QComboBox* colorModePopup_ = nullptr;
    QComboBox* maskPopup_ = nullptr;
    QCheckBox* preserveHueBox_ = nullptr;
    QCheckBox* blendBox_ = nullptr;
    QDoubleSpinBox* gammaField_ = nullptr;
    QLabel* pixelPropertiesHeader_ = nullptr;
    std::array<QLabel*, 3> pixelPropertiesColumns_{};
    QLabel* sourceRepPropertiesHeader_ = nullptr;
    QLabel* sourceRepProperties_ = nullptr;
    QLabel* targetHoverLabel_ = nullptr;
    QPointer<KVLChSpectrumView> spectrumView_;
    bool updatingControls_ = false;

    // Background description jobs; a newer image or mode supersedes older ones.
    struct DescriptionJob {
        std::jthread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };
    std::list<DescriptionJob> jobs_;
    std::uint64_t generation_ = 0;
    std::uint64_t lastRequest_ = 0;
    std::uint64_t shownRequest_ = 0;
    // Results of requests below this number belong to an image or table that is gone.
    std::uint64_t firstCurrentRequest_ = 1;
    // Pictures of earlier shifts, written into again once nobody else holds them: a fresh copy
    // of a large photograph costs more than writing into one that is already there.
    std::vector<KVBitmapPtr> destinationPool_;
    // Declared last: its thread delivers into the members above until it is gone.
    LiveShifter shifter_;
};

} // namespace tintorra
