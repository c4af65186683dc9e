#pragma once

namespace tintorra {

// Whether caps lock is on right now. Qt leaves caps lock out of the modifiers of its events, so
// this asks the X server directly; where there is no X server to ask (Wayland, the offscreen
// platform, a build without XCB) caps lock reads as off.
bool capsLockIsOn();

} // namespace tintorra
