#pragma once

#include <cstddef>
#include <string>

namespace tintorra::cli {

// A one-line progress bar on standard error, redrawn in place. It draws only when standard error
// is a terminal and the user did not ask for quiet, so that logs and pipes stay clean.
class ProgressBar {
public:
    ProgressBar(std::size_t totalSteps, bool quiet);
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Moves to `step` of the total and shows `label` beside the bar.
    void update(std::size_t step, const std::string& label);
    // Clears the line, so that a following message starts at the left margin.
    void clear();

    bool visible() const { return visible_; }

private:
    std::size_t total_;
    bool visible_;
    bool drawn_ = false;
};

} // namespace tintorra::cli
