#pragma once

#include <string>

namespace tintorra {

// The error domain of every error the program reports to the user.
inline constexpr const char* TintorraErrorDomain = "com.velmora.Tintorra.ErrorDomain";

enum TintorraErrorCode : long {
    // An image that is not RGB was opened, dropped or pasted.
    kTintorraErrorNotRGB = 256,
    // The document cannot be written in the type asked for.
    kTintorraErrorCannotSave = 512,
};

// An error as the user sees it in an alert: domain and code identify it, the two texts are shown
// (they are the English source texts; the desktop layer translates them).
struct KVError {
    std::string domain;
    long code = 0;
    std::string localizedDescription;
    std::string localizedRecoverySuggestion;

    friend bool operator==(const KVError&, const KVError&) = default;
};

// Opening a file whose first image is not RGB.
KVError notRGBImageFileError();
// Dropping or pasting an image that is not RGB (shown by the document's RGB alert).
KVError notRGBImageUseError();
// Saving in a type that has no encoder.
KVError cannotSaveInFormatError();

} // namespace tintorra
