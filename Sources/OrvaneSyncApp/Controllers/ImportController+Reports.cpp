#include "OrvaneSyncApp/Controllers/ImportController.h"

namespace orvane {

// A camera or sound report that was loaded before the scan lays its columns over the new clips here. No
// report can be loaded yet, so there is nothing to lay.
void ImportController::mergeLoadedReport() {}

} // namespace orvane
