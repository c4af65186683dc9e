#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tintorra {

// The colour model of a colour space, numbered as the bitmap layer expects (0 grey, 1 RGB).
enum class KVColorSpaceModel : int {
    unknown = -1,
    gray = 0,
    rgb = 1,
    cmyk = 2,
    lab = 3,
    deviceN = 4,
    indexed = 5,
    pattern = 6,
};

// The colour space of a bitmap: its model, a display name and, when it has one, the ICC profile
// it came with. A value type: copies are independent.
class KVColorSpace {
public:
    KVColorSpace() = default;
    KVColorSpace(KVColorSpaceModel model, std::string name,
                 std::vector<std::uint8_t> iccProfile = {})
        : model_(model), name_(std::move(name)), iccProfile_(std::move(iccProfile))
    {}

    KVColorSpaceModel model() const { return model_; }
    const std::string& name() const { return name_; }
    const std::vector<std::uint8_t>& iccProfile() const { return iccProfile_; }
    bool hasIccProfile() const { return !iccProfile_.empty(); }

    // Untagged device spaces, as images without an embedded profile get them.
    static KVColorSpace deviceRGB() { return {KVColorSpaceModel::rgb, "Device RGB"}; }
    static KVColorSpace deviceGray() { return {KVColorSpaceModel::gray, "Device Gray"}; }

    friend bool operator==(const KVColorSpace&, const KVColorSpace&) = default;

private:
    KVColorSpaceModel model_ = KVColorSpaceModel::rgb;
    std::string name_ = "Device RGB";
    std::vector<std::uint8_t> iccProfile_;
};

} // namespace tintorra
