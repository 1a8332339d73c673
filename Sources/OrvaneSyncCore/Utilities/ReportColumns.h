#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// The meaning of the column names of a report. Case, blanks, line ends and "_" are ignored: "File Name",
/// "FILE_NAME" and "filename" are the same name. Pure; any thread.
namespace ReportColumns {

/// The name in lower case, without blanks, line ends and "_".
std::string normalised(std::string_view name);
/// Whether this is a usual column name of camera and sound reports.
bool isKnown(std::string_view name);
/// Whether this is a usual column name that distinguishes the rows: it names a file or a scene. Name, date
/// and roll of a production do not, as they are also in the lines above a table.
bool distinguishesRows(std::string_view name);
/// Whether the cells of this column name files.
bool namesFiles(std::string_view name);

} // namespace ReportColumns
} // namespace orvane
