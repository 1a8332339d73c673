#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// What the names of a report's columns say. Case, blanks, line ends and "_" do not count: "File Name",
/// "FILE_NAME" and "filename" are one. Pure; any thread.
namespace ReportColumns {

/// In lower case and without those.
std::string normalised(std::string_view name);
/// Whether camera and sound reports have columns of this name.
bool isKnown(std::string_view name);
/// Of those, whether it tells rows apart: it names a file or a scene. A production's name, date or roll also
/// stands in the lines above a table.
bool tellsRowsApart(std::string_view name);
/// Whether the cells below it name files.
bool namesFiles(std::string_view name);

} // namespace ReportColumns
} // namespace orvane
