#pragma once

#include <base/dtrefclocksource.h>
#include <base/dtreftime.h>
#include <base/objptr.h>

namespace Vn
{

/// The system's reference clock, and the only maker of its readings.
///
///     Vn::DtRefTimeFactory& clock = Vn::DtRefTimeFactory::getInstance();
///     const Vn::DtRefTime now = clock.create();
///     const Vn::DtRefTime soon = clock.create(now, 2, Vn::Rational(25, 1));    // two frames later
///
/// The clock's zero is the start of the package `discreteTime`. Read-only from then on, so that any thread uses it.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefTimeFactory
{
public:
    DtRefTimeFactory(DtRefTimeFactory const&) = delete;
    DtRefTimeFactory& operator=(DtRefTimeFactory const&) = delete;

    /// The one factory, made at the first call and alive to the end of the process. Throws ExInternalError before the
    /// package `profiling` has started; it can be asked again afterwards.
    static DtRefTimeFactory& getInstance();

    DtRefClockSource const& getClockSource() const;

    /// The clock's present reading.
    DtRefTime create() const;

    /// A reading of `count`, which was taken from the clock `sourceName`. Throws DtRefClockEx::SourceMismatch unless
    /// that is exactly this clock's name.
    DtRefTime create(DtTimeIndex const& count, char const* sourceName) const;

    /// The reading that is `delta` counts of `rate` after `base`, truncated toward zero. `base`'s own rate isn't
    /// looked at. Throws as DtTimeIndex::convert(), for a null rate above all.
    DtRefTime create(DtRefTime const& base, DtTimeIndex const& delta, Rational const& rate) const;

private:
    DtRefTimeFactory();

    ObjPtr<DtRefClockSource> _clockSource;
};

}  // namespace Vn
