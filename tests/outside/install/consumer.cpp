// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include <cvn/wifi.hpp>

#include <cstdio>

int main()
{
    const auto networks = cvn::wifi::Client::parse_networks(
        "02:00:00:00:02:00\t2437\t-48\t[ESS]\tCafe\n", "0\tHome\tany\t\n", {});
    for (const cvn::wifi::Network& network : networks)
        std::puts(qPrintable(network.ssid));
}
