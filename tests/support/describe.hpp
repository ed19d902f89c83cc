// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/// The library's values and errors as text.

#pragma once

#include "cvn/wifi.hpp"

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

/// `state|ssid|address|id`
inline std::string describe(const cvn::wifi::Status& status)
{
    return (status.state + '|' + status.ssid + '|' + status.address).toStdString() + '|'
        + std::to_string(status.saved_id);
}

/// `ssid|bssid|frequency|signal|id|security|flags`, with `current|` in front of the current one.
inline std::string describe(const cvn::wifi::Network& network)
{
    return (network.current ? "current|" : "") + (network.ssid + '|' + network.bssid).toStdString()
        + '|' + std::to_string(network.frequency) + '|' + std::to_string(network.signal) + '|'
        + std::to_string(network.saved_id) + '|'
        + (cvn::wifi::Client::security_name(network.security) + '|' + network.flags).toStdString();
}

inline std::vector<std::string> describe(const std::vector<cvn::wifi::Network>& networks)
{
    std::vector<std::string> result;
    for (const cvn::wifi::Network& network : networks)
        result.push_back(describe(network));
    return result;
}

/// The message that `function` throws, with the type in front if it is not std::runtime_error.
template <typename Function> std::string error_of(const Function& function)
{
    try {
        function();
    } catch (const std::exception& error) {
        const bool exact = typeid(error) == typeid(std::runtime_error);
        return exact ? error.what() : std::string(typeid(error).name()) + ": " + error.what();
    }
    return "no error";
}
