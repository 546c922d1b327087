#include "command.h"

#include <base/osterminal.h>

#include <iostream>

namespace vnlog
{
void warn(std::string const& text)
{
    std::cerr << "vnlog: " << Vn::OsTerminal::shown(text) << "\n";
}

}  // namespace vnlog
