#include "CliRunner.h"

#include "imageio/ImageFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace tintorra::cliTest {

namespace {

std::string quoted(const std::string& argument)
{
    std::string text(1, '\'');
    for (const char c : argument) {
        if (c == '\'') {
            text.append("'\\''");
        } else {
            text.push_back(c);
        }
    }
    text.push_back('\'');
    return text;
}

std::string slurp(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        result.push_back(line);
    }
    return result;
}

} // namespace

std::vector<std::string> CliRun::errLines() const
{
    return lines(err);
}

Json CliRun::json() const
{
    return Json::parse(out);
}

std::vector<Json> CliRun::jsonLines() const
{
    std::vector<Json> values;
    for (const std::string& line : lines(out)) {
        values.push_back(Json::parse(line));
    }
    return values;
}

namespace {

// Runs the tool with standard output into `capture`/out and standard error into `errPath`.
CliRun runWithStandardError(const std::vector<std::string>& arguments, const ScratchFolder& capture,
                            const std::string& errPath,
                            const std::filesystem::path& standardInput = "/dev/null")
{
    std::string command = quoted(TINTORRA_CLI);
    for (const std::string& argument : arguments) {
        command.push_back(' ');
        command.append(quoted(argument));
    }
    command.append(" >");
    command.append(quoted((capture / "out").string()));
    command.append(" 2>");
    command.append(quoted(errPath));
    command.append(" <");
    command.append(quoted(standardInput.string()));
    const int status = std::system(command.c_str());
    CliRun run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.out = slurp(capture / "out");
    return run;
}

} // namespace

CliRun runCli(const std::vector<std::string>& arguments, const std::filesystem::path& standardInput)
{
    const ScratchFolder capture;
    CliRun run =
        runWithStandardError(arguments, capture, (capture / "err").string(), standardInput);
    run.err = slurp(capture / "err");
    return run;
}

bool pseudoTerminalAvailable()
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0) {
        return false;
    }
    close(terminal);
    return true;
}

CliRun runCliOnTerminal(const std::vector<std::string>& arguments)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
        ADD_FAILURE() << "no pseudo-terminal: " << std::strerror(errno);
        if (terminal >= 0) {
            close(terminal);
        }
        return {};
    }
    const std::string device = ptsname(terminal);
    const ScratchFolder capture;
    CliRun run = runWithStandardError(arguments, capture, device);
    // The tool has ended: whatever it wrote waits in the terminal's buffer.
    fcntl(terminal, F_SETFL, fcntl(terminal, F_GETFL) | O_NONBLOCK);
    char buffer[4096];
    for (ssize_t n; (n = read(terminal, buffer, sizeof buffer)) > 0;) {
        run.err.append(buffer, static_cast<std::size_t>(n));
    }
    close(terminal);
    return run;
}

ScratchFolder::ScratchFolder()
{
    static std::atomic<int> counter{0};
    path_ = std::filesystem::temp_directory_path() /
            ("tintorra-cli-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

KVBitmapPtr makeBlocksImage(int bitsPerSample)
{
    KVBitmapLayout layout;
    layout.pixelsWide = 32;
    layout.pixelsHigh = 8;
    layout.bitsPerSample = bitsPerSample;
    layout.samplesPerPixel = 3;
    layout.hasAlpha = false;
    // Untagged, so that the published sRGB values apply.
    KVBitmapPtr bitmap = KVBitmap::create(layout);
    const unsigned full = bitsPerSample == 8 ? 255 : 65535;
    const unsigned grey = bitsPerSample == 8 ? 128 : 32896;
    const unsigned colours[4][3] = {{full, 0, 0}, {0, full, 0}, {0, 0, full}, {grey, grey, grey}};
    for (int y = 0; y < 8; ++y) {
        std::uint8_t* row = bitmap->bitmapData() + y * bitmap->bytesPerRow();
        for (int x = 0; x < 32; ++x) {
            for (int c = 0; c < 3; ++c) {
                const unsigned v = colours[x / 8][c];
                if (bitsPerSample == 8) {
                    row[x * 3 + c] = static_cast<std::uint8_t>(v);
                } else {
                    const auto word = static_cast<std::uint16_t>(v);
                    std::memcpy(row + (x * 3 + c) * 2, &word, 2);
                }
            }
        }
    }
    return bitmap;
}

void writePng(const std::filesystem::path& path, const KVBitmap& bitmap)
{
    ASSERT_TRUE(writeImageFile(path, bitmap, ImageFormat::png).ok());
}

void writeTiff(const std::filesystem::path& path, const KVBitmap& bitmap)
{
    ASSERT_TRUE(writeImageFile(path, bitmap, ImageFormat::tiff).ok());
}

KVBitmapPtr readImage(const std::filesystem::path& path)
{
    auto image = readImageFile(path);
    return image ? image.take() : nullptr;
}

std::vector<unsigned> samplesAt(const KVBitmap& bitmap, int x, int y)
{
    std::vector<unsigned> samples;
    const std::uint8_t* row = bitmap.bitmapData() + y * bitmap.bytesPerRow();
    const auto count = bitmap.samplesPerPixel();
    for (std::int64_t c = 0; c < count; ++c) {
        if (bitmap.bitsPerSample() == 8) {
            samples.push_back(row[x * count + c]);
        } else {
            std::uint16_t word = 0;
            std::memcpy(&word, row + (x * count + c) * 2, 2);
            samples.push_back(word);
        }
    }
    return samples;
}

std::vector<std::string> filesIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace tintorra::cliTest
