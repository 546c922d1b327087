#include "workgroup.h"

#include <base/exinternalerror.h>

namespace
{
class Errors : public WorkGroup
{
public:
    Errors() : WorkGroup("errors", "Throws exceptions, copies them and catches them by each of their bases.", 1000)
    {}

private:
    void work(unsigned long count) override
    {
        for (unsigned long i = 0; i < count; ++i) {
            const std::string reason = "number " + std::to_string(i);
            try {
                throw Vn::ExInternalError("groups", 1, reason.c_str());
            } catch (std::exception const& failure) {
                require(failure.what() == reason, "the reason of a standard exception");
            }
            try {
                throw Vn::ExInternalError("groups", 1, reason.c_str());
            } catch (Vn::ExBase const& failure) {
                Vn::ExBase const* const copy = failure.clone();
                require(copy->getReason() == reason, "the reason of a copy");
                delete copy;
            }
        }
    }
} errors;
}  // namespace
