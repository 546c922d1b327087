// Private to the forms that are JSON: exportjson.cpp, exportotlp.cpp, exportchrome.cpp.
#pragma once

#include "exporttext.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace vnlog
{
/// Members stay in the order in which they come.
using Json = nlohmann::ordered_json;

/// Texts are given as they are; here U+FFFD takes the place of what isn't UTF-8. Never throws for a text.
inline std::string toJsonText(Json const& value)
{
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Adds the exact bytes of a text that isn't UTF-8.
inline void addBytes(Json& object, char const* name, std::string_view bytes)
{
    if (!isUtf8(bytes))
        object[name] = toBase64(bytes);
}

/// What a line of trace draws, in words.
inline char const* getStepWord(TraceStep step)
{
    return step == TraceStep::Enter ? "enter" : step == TraceStep::Leave ? "leave" : "text";
}

}  // namespace vnlog
