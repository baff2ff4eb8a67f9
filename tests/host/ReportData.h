#ifndef TRUNNION_TESTS_HOST_REPORT_DATA_H
#define TRUNNION_TESTS_HOST_REPORT_DATA_H

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace test
{

/// What stands in a column of a report: each number is a whole one times 10^-decimals.
struct DecodedColumn
{
    int decimals{0};
    std::vector<double> wholes;

    double At(std::size_t row) const;
};

/// As the page reads it, but in plain steps. Throws for what is no such column.
DecodedColumn Decoded(const nlohmann::json& column);

/// A column of a run by its name.
DecodedColumn ColumnOf(const nlohmann::json& data, const std::string& name);

} // namespace test

#endif
