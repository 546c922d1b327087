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
/// The clock starts at zero when the package `discreteTime` starts, or at the first getInstance() if that is earlier.
/// The factory never changes after that, so any thread may use it; it exists until the process ends.
/// Tests: tests/base/dtreftimetest.cpp.
class VN_BASE_EXPORT DtRefTimeFactory
{
public:
    /// @{
    /// There is one factory, which is not copied.
    DtRefTimeFactory(DtRefTimeFactory const&) = delete;
    DtRefTimeFactory& operator=(DtRefTimeFactory const&) = delete;
    /// @}

    /// The one factory, made at the first call and never destroyed. Throws ExInternalError before the package
    /// `profiling` has started; a later call tries again. Thread-safe.
    static DtRefTimeFactory& getInstance();

    /// The clock itself, for its name and rate.
    DtRefClockSource const& getClockSource() const;

    /// The clock's present reading. Throws ExSysErrorANSI if the system's counter cannot be read.
    DtRefTime create() const;

    /// The reading `count`, which was taken from the clock `sourceName`, for example one that arrived as a bare
    /// number.
    ///
    ///     create(7, "HwCounter")  ->  7 at the clock's rate
    ///     create(7, "hwcounter")  ->  throws DtRefClockEx::SourceMismatch
    ///     create(7, nullptr)      ->  throws DtRefClockEx::SourceMismatch
    ///
    DtRefTime create(DtTimeIndex const& count, char const* sourceName) const;

    /// The reading that is `delta` counts of `rate` after `base`. The distance is truncated toward zero, and `base`'s
    /// own rate is not looked at.
    ///
    /// Throws as DtTimeIndex::convert() with std::round_toward_zero: RationalEx::ExDenominatorZero for a null rate.
    /// Products of both rates wrap at 32 bits without a report; see DtTimeMark.
    DtRefTime create(DtRefTime const& base, DtTimeIndex const& delta, Rational const& rate) const;

private:
    DtRefTimeFactory();

    ObjPtr<DtRefClockSource> _clockSource;
};

}  // namespace Vn
