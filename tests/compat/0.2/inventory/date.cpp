#include "date.h"

#include <base/exbase.h>
#include <base/osdateutil.h>

#include <cstdio>

std::string Inventory::textOf(Vn::OsDateTypes::DateRep const& date)
{
    try {
        const Vn::OsDateTypes::DateStruct fields =
            Vn::OsDateUtil::convertToDateStruct(date, Vn::OsDateTypes::LocalTime);
        char text[80];
        std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", fields.getYear(), fields.getMonth(),
                      fields.getDay(), fields.getHour(), fields.getMinute(), static_cast<int>(fields.getSecond()));
        return text;
    } catch (Vn::ExBase const&) {
        return "(no date)";
    }
}
