#pragma once

// Little CMS profile handles for the colour code's own sources; this header is not part of the
// core's interface, so nothing outside src/colour needs the Little CMS headers.
#include <lcms2.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tintorra {

struct LcmsProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

// Owns an open profile and closes it when it goes.
using LcmsProfileHandle = std::unique_ptr<void, LcmsProfileCloser>;

// Opens profile bytes; empty when they are missing or do not parse.
LcmsProfileHandle openLcmsProfile(const std::vector<std::uint8_t>& bytes);

// The profile serialised as ICC bytes; empty when it cannot be written.
std::vector<std::uint8_t> saveLcmsProfile(cmsHPROFILE profile);

} // namespace tintorra
