#include "imageio/TiffIO.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace tintorra {

namespace {

int keepError(TIFF*, void* userData, const char* module, const char* format, va_list arguments)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    std::string& lastError = *static_cast<std::string*>(userData);
    lastError = module ? std::string(module) + ": " + text : std::string(text);
    return 1;
}

int ignoreWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

toff_t seekPosition(std::uint64_t current, std::uint64_t size, toff_t offset, int whence)
{
    std::uint64_t base = 0;
    switch (whence) {
    case SEEK_SET:
        base = 0;
        break;
    case SEEK_CUR:
        base = current;
        break;
    case SEEK_END:
        base = size;
        break;
    default:
        return static_cast<toff_t>(-1);
    }
    // Offsets are unsigned here, but libtiff passes negative relative offsets as their two's
    // complement; wrapping arithmetic gives the intended position.
    return base + offset;
}

tmsize_t sourceRead(thandle_t handle, void* buffer, tmsize_t size)
{
    auto& source = *static_cast<TiffMemorySource*>(handle);
    if (size <= 0 || source.position >= source.data.size())
        return 0;
    const std::uint64_t available = source.data.size() - source.position;
    const std::uint64_t count =
        std::min<std::uint64_t>(available, static_cast<std::uint64_t>(size));
    std::memcpy(buffer, source.data.data() + source.position, count);
    source.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t sourceWrite(thandle_t, void*, tmsize_t)
{
    return 0;
}

toff_t sourceSeek(thandle_t handle, toff_t offset, int whence)
{
    auto& source = *static_cast<TiffMemorySource*>(handle);
    const toff_t position = seekPosition(source.position, source.data.size(), offset, whence);
    if (position == static_cast<toff_t>(-1))
        return position;
    source.position = position;
    return position;
}

int closeNothing(thandle_t)
{
    return 0;
}

toff_t sourceSize(thandle_t handle)
{
    return static_cast<TiffMemorySource*>(handle)->data.size();
}

int sourceMap(thandle_t handle, void** base, toff_t* size)
{
    auto& source = *static_cast<TiffMemorySource*>(handle);
    // libtiff never writes through a mapping of a file opened for reading.
    *base = const_cast<std::uint8_t*>(source.data.data());
    *size = source.data.size();
    return 1;
}

void sourceUnmap(thandle_t, void*, toff_t) {}

tmsize_t sinkRead(thandle_t handle, void* buffer, tmsize_t size)
{
    auto& sink = *static_cast<TiffMemorySink*>(handle);
    if (size <= 0 || sink.position >= sink.bytes.size())
        return 0;
    const std::uint64_t count = std::min<std::uint64_t>(sink.bytes.size() - sink.position,
                                                        static_cast<std::uint64_t>(size));
    std::memcpy(buffer, sink.bytes.data() + sink.position, count);
    sink.position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t sinkWrite(thandle_t handle, void* buffer, tmsize_t size)
{
    auto& sink = *static_cast<TiffMemorySink*>(handle);
    if (size <= 0)
        return 0;
    const std::uint64_t end = sink.position + static_cast<std::uint64_t>(size);
    try {
        if (end > sink.bytes.size()) {
            if (end > sink.bytes.capacity())
                sink.bytes.reserve(std::max<std::uint64_t>(end, sink.bytes.capacity() * 2));
            sink.bytes.resize(end);
        }
    } catch (const std::bad_alloc&) {
        sink.outOfMemory = true;
        return 0;
    }
    std::memcpy(sink.bytes.data() + sink.position, buffer, static_cast<std::size_t>(size));
    sink.position = end;
    return size;
}

toff_t sinkSeek(thandle_t handle, toff_t offset, int whence)
{
    auto& sink = *static_cast<TiffMemorySink*>(handle);
    const toff_t position = seekPosition(sink.position, sink.bytes.size(), offset, whence);
    if (position == static_cast<toff_t>(-1))
        return position;
    sink.position = position;
    return position;
}

toff_t sinkSize(thandle_t handle)
{
    return static_cast<TiffMemorySink*>(handle)->bytes.size();
}

int sinkMap(thandle_t, void**, toff_t*)
{
    return 0;
}

struct OptionsDeleter {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

std::unique_ptr<TIFFOpenOptions, OptionsDeleter> makeOptions(std::string& lastError)
{
    std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
    if (options) {
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &keepError, &lastError);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &ignoreWarning, nullptr);
    }
    return options;
}

} // namespace

TiffHandle openTiffSource(TiffMemorySource& source)
{
    auto options = makeOptions(source.lastError);
    if (!options)
        return nullptr;
    source.position = 0;
    return TiffHandle(TIFFClientOpenExt("image", "r", &source, &sourceRead, &sourceWrite,
                                        &sourceSeek, &closeNothing, &sourceSize, &sourceMap,
                                        &sourceUnmap, options.get()));
}

TiffHandle openTiffSink(TiffMemorySink& sink, bool bigTiff)
{
    auto options = makeOptions(sink.lastError);
    if (!options)
        return nullptr;
    sink.position = 0;
    return TiffHandle(TIFFClientOpenExt("image", bigTiff ? "w8m" : "wm", &sink, &sinkRead,
                                        &sinkWrite, &sinkSeek, &closeNothing, &sinkSize, &sinkMap,
                                        &sourceUnmap, options.get()));
}

} // namespace tintorra
