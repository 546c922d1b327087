#pragma once

#include "scanner.h"

#include <string>
#include <vector>

namespace Inventory
{

/// How a copy of what a scanner found went.
struct CopyResult
{
    std::size_t folders = 0;
    std::size_t files = 0;
    std::vector<std::string> failures;  ///< names, each with the reason
};

/// Copies the folders and files that were found in `folder` to `target`, and compares each copy with its source byte by
/// byte. What fails is noted, and the copy goes on. Throws if `target` itself can't be made.
CopyResult copyTree(Findings const& findings, std::string const& folder, std::string const& target);

}  // namespace Inventory
