#include <base/testinform.h>

#include <base/exreasontext_p.h>
#include <base/osenv_p.h>
#include <base/trace.h>

#include <fstream>
#include <string>

namespace Vn
{
namespace
{
/// Passes opening and reason on as one text.
///
/// Intended: each message replaces the file's content, so the file holds the last one, which is the one that matters
/// to whoever ran the program. A file that can't be opened loses the message: a report of a failure must not fail. Do
/// not mend.
void report(char const* opening, char const* reason)
{
    const std::string text = std::string(opening) + ExReasonText::orEmpty(reason);
    char const* const file = System::getOwnVariable("VN_RUN_TEST_MSGS");
    if (file != nullptr && *file != '\0')
        std::ofstream(file) << text << "\n";
    else
        TraceManager::getInstance().print(text.c_str());
}
}  // namespace

/// The three differ by their openings alone. A null reason leaves the opening.
void TestInform::testNotPerformed(char const* reason)
{
    report("Test not performed: ", reason);
}

void TestInform::exceptionEncountered(char const* reason)
{
    report("Exception encountered: ", reason);
}

void TestInform::abnormalTermination(char const* reason)
{
    report("Abnormal termination: ", reason);
}

}  // namespace Vn
