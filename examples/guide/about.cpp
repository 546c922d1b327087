// about: dates, the environment, texts from outside and another program. Its page is docs/system.md.
#include <base/envvar.h>
#include <base/osdateutil.h>
#include <base/osprocess.h>
#include <base/osterminal.h>

#include <iostream>
#include <stdexcept>

static Vn::EnvVar city("ABOUT_CITY", "nowhere");
static Vn::EnvIntVar floors("ABOUT_FLOORS", 1);

namespace
{
void date()
{
    Vn::OsDateTypes::DateRep leapDay;
    if (!Vn::OsDateUtil::makeTime(2000, 2, 29, 12, 0, 0.25, Vn::OsDateTypes::UTCTime, leapDay))
        throw std::logic_error("no date");
    const Vn::OsDateTypes::DateRep later = Vn::OsDateUtil::add(leapDay, 366 * 86400.0);
    const Vn::OsDateTypes::DateStruct fields = Vn::OsDateUtil::convertToDateStruct(later, Vn::OsDateTypes::UTCTime);
    std::cout << "366 days later: " << fields.getYear() << "-" << fields.getMonth() << "-" << fields.getDay()
              << "\n";
    std::cout << "seconds between: " << static_cast<long>(Vn::OsDateUtil::diff(later, leapDay)) << "\n";
}
}  // namespace

int main()
{
    try {
        date();
        std::cout << "city: " << Vn::OsTerminal::shown(city.getValue()) << ", floors: " << floors.getValue()
                  << "\n";
        std::cout << "shown: " << Vn::OsTerminal::shown("red\x1b[31m\n") << std::endl;
        char const* const command[] = {"first", "-n", "child", nullptr};
        Vn::OsProcess process;
        process.start(command);
        process.wait();
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "about: " << Vn::OsTerminal::shown(failure.what()) << "\n";
        return 1;
    }
}
