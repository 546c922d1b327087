# cmake -D page=FOLDER -D output=FILE -P embedpage.cmake: makes the source whose constants are the page's files.
#
# Each file is a literal of its own: compilers need to take no more than 65536 characters in one.
function(literal variable file)
    file(READ "${page}/${file}" text)
    set(${variable} "R\"page(${text})page\"" PARENT_SCOPE)
endfunction()

literal(frame page.html)
literal(style style.css)
set(scripts "")
foreach(file IN ITEMS model.js picture.js list.js main.js)
    literal(script ${file})
    string(APPEND scripts "${script},\n")
endforeach()
file(WRITE "${output}" "// Made of the files in the folder page.
#include \"timelinepage.h\"

namespace vnlog
{

const std::string_view pageFrame = ${frame};
const std::string_view pageStyle = ${style};
const std::string_view pageScripts[pageScriptCount] = {${scripts}};

}  // namespace vnlog
")
