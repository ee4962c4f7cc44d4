#pragma once

#include <string>

#include "metric.h"
#include "quality.h"
#include "report.h"

/// Results as aligned lines for people.
std::string as_text(const surface_report& report);
std::string as_text(const quality_report& report);
std::string as_text(const metric_report& report);

/// Results as one JSON object; docs/command.md names the keys. Numbers that are not finite are
/// null, bytes of file names that are no UTF-8 become U+FFFD.
std::string as_json(const surface_report& report);
std::string as_json(const quality_report& report);
std::string as_json(const metric_report& report);
