// Builds without the four-lane kernels (processors other than x86-64) still link the code that
// would call them; batch::vectorised() is false there, so none of these is ever reached.
#include "engine/BatchMath.h"
#include "engine/RowKernel.h"

namespace tintorra {

namespace batch::avx2 {
void pow(const double*, double, double*, std::size_t)
{
    __builtin_trap();
}
void cbrt(const double*, double*, std::size_t)
{
    __builtin_trap();
}
void atan2(const double*, const double*, double*, std::size_t)
{
    __builtin_trap();
}
void sincos(const double*, double*, double*, std::size_t)
{
    __builtin_trap();
}
} // namespace batch::avx2

namespace rowKernel::avx2 {
std::size_t readCandidates(const ReadConstants&, const std::uint8_t*, std::size_t, std::size_t,
                           std::int64_t, const RowWords&, const Candidates&)
{
    __builtin_trap();
}
std::size_t selectCandidates(const SelectConstants&, const Candidates&, std::size_t, double*,
                             const SelectedColors&)
{
    __builtin_trap();
}
std::size_t selectLchCandidates(const SelectConstants&, const Candidates&, std::size_t, double*,
                                const SelectedColors&)
{
    __builtin_trap();
}
void paintShifted(const PaintConstants&, const SelectedColors&, std::size_t)
{
    __builtin_trap();
}
void writePainted(const WriteConstants&, const SelectedColors&, std::size_t, std::uint8_t*,
                  std::int64_t)
{
    __builtin_trap();
}
void encodeSamples(const Encoding&, const double*, std::size_t, std::uint32_t*)
{
    __builtin_trap();
}
void chromasForHues(const ChromaTable&, const double*, const double*, std::size_t, double*)
{
    __builtin_trap();
}
void maxChromasForHues(const double*, const double*, std::size_t, double*)
{
    __builtin_trap();
}
} // namespace rowKernel::avx2

} // namespace tintorra
