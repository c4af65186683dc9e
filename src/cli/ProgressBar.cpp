#include "cli/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace tintorra::cli {

namespace {
constexpr std::size_t kBarWidth = 30;
constexpr std::size_t kLabelWidth = 40;
} // namespace

ProgressBar::ProgressBar(std::size_t totalSteps, bool quiet)
    : total_(std::max<std::size_t>(totalSteps, 1)), visible_(!quiet && isatty(STDERR_FILENO) == 1)
{}

ProgressBar::~ProgressBar()
{
    clear();
}

void ProgressBar::update(std::size_t step, const std::string& label)
{
    if (!visible_) {
        return;
    }
    step = std::min(step, total_);
    const std::size_t filled = step * kBarWidth / total_;
    std::string bar(filled, '#');
    bar.append(kBarWidth - filled, '-');
    std::string shown =
        label.size() > kLabelWidth ? "..." + label.substr(label.size() - (kLabelWidth - 3)) : label;
    std::fprintf(stderr, "\r[%s] %3zu%% %-40s", bar.c_str(), step * 100 / total_, shown.c_str());
    std::fflush(stderr);
    drawn_ = true;
}

void ProgressBar::clear()
{
    if (visible_ && drawn_) {
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(kBarWidth + kLabelWidth + 8), "");
        std::fflush(stderr);
        drawn_ = false;
    }
}

} // namespace tintorra::cli
