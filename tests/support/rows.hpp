// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// Rows of parameterized tests have a `name` of letters and digits. Declare them outside of any
/// namespace: GoogleTest does not find the operator below otherwise.

#pragma once

#include <ostream>

template <typename Row>
requires requires(const Row& row)
{
    row.name;
}
std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.name;
}

/// The last argument of INSTANTIATE_TEST_SUITE_P.
inline constexpr auto by_name = [](const auto& row) { return row.param.name; };
