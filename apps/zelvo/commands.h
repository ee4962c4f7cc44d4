#pragma once

#include <limits>
#include <optional>
#include <string>

#include "mesh_reading.h"

/// The subcommands: what they are told, and a function that does the work, says on the standard
/// error what there is to say and returns the exit code. A distance that was not given is NaN, a
/// name empty.

struct report_options {
    std::string file;
    std::string vtk;
    double tolerance = std::numeric_limits<double>::quiet_NaN();
    bool json = false;
};
int run_report(const report_options& given);

struct convert_options {
    std::string input;
    std::string output;
    std::string from;
    std::string to;
    node_choice nodes = node_choice::numbered;
};
int run_convert(const convert_options& given);

struct quality_options {
    std::string file;
    std::string from;
    bool json = false;
};
int run_quality(const quality_options& given);

struct metric_options {
    std::string file;
    std::string output;
    std::string from;
    std::string field;
    node_choice nodes = node_choice::numbered;
    double min = std::numeric_limits<double>::quiet_NaN();
    double max = std::numeric_limits<double>::quiet_NaN();
    double gradation = std::numeric_limits<double>::quiet_NaN();
    double fallback = std::numeric_limits<double>::quiet_NaN();
    bool json = false;
};
int run_metric(const metric_options& given);
