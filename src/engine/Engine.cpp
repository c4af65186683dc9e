#include "engine/Engine.h"

#include "image/PixelAccess.h"

namespace tintorra {

namespace {

Error cancelledError()
{
    return {ErrorCode::cancelled, "The work was cancelled."};
}

Error outOfMemoryError(const char* what)
{
    return {ErrorCode::outOfMemory, std::string("There is not enough memory for ") + what +
                                        "; close other documents or programs and try again."};
}

Error unsupportedLayoutError()
{
    return {ErrorCode::unsupportedImage,
            "The image's pixel layout is not supported; convert it to 8- or 16-bit RGB."};
}

} // namespace

Engine::Engine(EngineOptions options)
    : pool_(options.threads), kernels_(options.kernels), keepsEntryMaps_(options.keepsEntryMaps),
      tableMemory_(std::make_shared<TableMemory>(options.tableMemory)),
      caches_(std::make_unique<ShiftCaches>()), tableWrites_(options.tableWrites),
      failGamutAllocation_(options.failGamutAllocation)
{}

Engine::~Engine()
{
    tableMemory_->close();
}

void Engine::releaseRetainedTableMemory()
{
    {
        const std::lock_guard lock(entryMapMutex_);
        keptEntryMap_ = {};
    }
    tableMemory_->release();
}

detail::EntryMapSlot Engine::entryMapSlot(const ShiftRequest& request)
{
    detail::EntryMapSlot slot;
    // A shift in place changes the source that a map's samples were taken from.
    if (!keepsEntryMaps_ || request.colorTable == nullptr ||
        request.destination == request.source) {
        return slot;
    }
    const std::lock_guard lock(entryMapMutex_);
    if (keptEntryMap_.table.lock() == request.colorTable &&
        keptEntryMap_.source.lock() == request.source) {
        slot.map = keptEntryMap_.map;
    } else if (keptEntryMap_.table.expired() || keptEntryMap_.source.expired()) {
        keptEntryMap_ = {};
    }
    slot.mayBuild = true;
    return slot;
}

void Engine::keepEntryMap(const ShiftRequest& request, PixelEntryMapPtr map)
{
    const std::lock_guard lock(entryMapMutex_);
    keptEntryMap_ = {request.colorTable, request.source, std::move(map)};
}

Result<ColorTablePtr> Engine::buildColorTable(const KVBitmapPtr& image, double imageGamma,
                                              ColorSpaceModel colorSpaceModel, std::stop_token stop)
{
    if (stop.stop_requested()) {
        return cancelledError();
    }
    PixelManipulationOffsets offsets;
    if (image == nullptr || !initializePixelManipulationOffsets(offsets, image, imageGamma)) {
        return unsupportedLayoutError();
    }
    if (offsets.pixelsWide <= 0 || offsets.pixelsHigh <= 0) {
        return Error{ErrorCode::invalidRequest, "The image has no pixels."};
    }
    if (!colorTableCanAddress(offsets.pixelsWide, offsets.pixelsHigh, offsets.bytesPerRow,
                              offsets.bytesPerPixel)) {
        return Error{ErrorCode::unsupportedImage,
                     "The image is too large for its colour table; reduce it below 4 GB of "
                     "samples and try again."};
    }
    const UseWorkerPool use(pool_);
    const UseTableMemory memory(tableMemory_);
    auto table = std::make_shared<LChColorTable>(
        createLChColorTableWithImageGamma(image, imageGamma, colorSpaceModel));
    if (table->empty()) {
        // The image was checked above: only memory can have run out.
        return outOfMemoryError("the image's colour table");
    }
    if (stop.stop_requested()) {
        return cancelledError();
    }
    return ColorTablePtr(std::move(table));
}

Result<KVColorGamutPtr> Engine::buildGamut(const KVColorSpace& space,
                                           ColorSpaceModel colorSpaceModel, std::stop_token stop)
{
    if (stop.stop_requested()) {
        return cancelledError();
    }
    const UseWorkerPool use(pool_);
    auto gamut = std::make_shared<const KVColorGamut>(space, colorSpaceModel, failGamutAllocation_);
    if (!gamut->hasTables()) {
        return outOfMemoryError("the gamut tables");
    }
    if (stop.stop_requested()) {
        return cancelledError();
    }
    return KVColorGamutPtr(std::move(gamut));
}

Result<KVBitmapPtr> Engine::shift(const ShiftRequest& request, std::stop_token stop,
                                  const ProgressCallback& progress)
{
    return run(request, std::move(stop), progress, nullptr);
}

Result<TrackedShift> Engine::shiftTracked(const ShiftRequest& request, std::stop_token stop,
                                          const ProgressCallback& progress)
{
    detail::TableFootprints footprints;
    const ShiftFootprint* given = request.destinationFootprint.get();
    if (given != nullptr && request.destination != nullptr && request.colorTable != nullptr &&
        given->destination.lock() == request.destination &&
        given->source.lock() == request.source && given->colorTable.lock() == request.colorTable) {
        footprints.destinationHolds = &given->written;
        footprints.plan = given->plan;
    }
    Result<KVBitmapPtr> shifted = run(request, std::move(stop), progress, &footprints);
    if (!shifted) {
        return shifted.error();
    }
    TrackedShift tracked{shifted.take(), nullptr};
    if (footprints.tracked) {
        tracked.footprint = std::make_shared<const ShiftFootprint>(
            ShiftFootprint{request.source, tracked.image, request.colorTable,
                           std::move(footprints.written), std::move(footprints.plan)});
    }
    return tracked;
}

Result<KVBitmapPtr> Engine::run(const ShiftRequest& request, std::stop_token stop,
                                const ProgressCallback& progress,
                                detail::TableFootprints* footprints)
{
    if (request.source == nullptr) {
        return Error{ErrorCode::invalidRequest, "There is no image to shift."};
    }
    HueShiftParameters parameters = request.parameters;
    // Held for the whole run, whatever becomes of the request meanwhile.
    const ColorTablePtr table = request.colorTable;
    if (table != nullptr) {
        parameters.colorTable = ColorTableRef::of(*table);
    } else if (request.source->bitsPerSample() == 8) {
        return Error{ErrorCode::invalidRequest,
                     "An 8-bit image is shifted through its colour table, and none was given."};
    }
    if (stop.stop_requested()) {
        return cancelledError();
    }
    if (request.destination == request.source) {
        // Pictures made in place change their source under any kept map.
        const std::lock_guard lock(entryMapMutex_);
        keptEntryMap_ = {};
    }
    RunControl control(stop, progress);
    const UseWorkerPool use(pool_);
    const UseTableMemory memory(tableMemory_);
    detail::EntryMapSlot entryMap = entryMapSlot(request);
    const PixelEntryMapPtr kept = entryMap.map;
    KVBitmapPtr shifted =
        detail::hueShift(request.source, request.destination, std::move(parameters), 0, kernels_,
                         &control, {caches_.get(), tableWrites_, &entryMap}, footprints);
    if (entryMap.map != nullptr && entryMap.map != kept) {
        keepEntryMap(request, std::move(entryMap.map));
    }
    if (stop.stop_requested()) {
        return cancelledError();
    }
    if (shifted == nullptr) {
        return Error{ErrorCode::unsupportedImage,
                     "The image could not be shifted: its pixel layout is not supported or "
                     "memory ran out; convert it to 8- or 16-bit RGB and try again."};
    }
    if (progress) {
        progress(1.0);
    }
    return shifted;
}

} // namespace tintorra
