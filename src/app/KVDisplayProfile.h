#pragma once

#include <QByteArray>

namespace tintorra {

// The ICC profile of the display the program shows its images on: the X server's _ICC_PROFILE
// property of the root window (which colour managers set), read once and kept; empty when there
// is none or the display is not X11, in which case images are shown as sRGB.
QByteArray displayIccProfile();

// Replaces what displayIccProfile() answers; for tests and for a display that changed.
void setDisplayIccProfile(const QByteArray& profile);

} // namespace tintorra
