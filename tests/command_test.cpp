// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

#include "support/program.hpp"
#include "support/scripted_supplicant.hpp"

#include <gmock/gmock.h>

#include <cerrno>

using testing::ElementsAre;

TEST(Command, PrintsTheStatus)
{
    ScriptedSupplicant supplicant;
    supplicant.on("STATUS",
                  { reply("wpa_state=COMPLETED\nssid=Home\nip_address=10.0.0.7\nid=0\n") });
    EXPECT_EQ(run({ "status" }, environment_for(supplicant.path())),
              (Outcome{ 0, "State: COMPLETED\nNetwork: Home\nAddress: 10.0.0.7\n", "" }));
    EXPECT_THAT(supplicant.requests(), ElementsAre("STATUS"));
}

TEST(Command, SaysWhyTheTemporarySocketCouldNotBeBound)
{
    ScriptedSupplicant supplicant;
    EXPECT_EQ(run({ "status" }, environment_for(supplicant.path(), fault("bind", ENOSPC))),
              (Outcome{ 1, "",
                        "corvane-wifi: Could not bind temporary Wi-Fi control socket: "
                        "No space left on device\n" }));
}

TEST(Command, PickAsksForANumberAndAPassword)
{
    ScriptedSupplicant supplicant;
    supplicant.on("SCAN_RESULTS",
                  { reply("02:00:00:00:02:00\t2437\t-50\t[WPA2-PSK-CCMP][ESS]\tHome2\n") });
    supplicant.on("ADD_NETWORK", { reply("3\n") });
    Terminal terminal({ "pick" }, environment_for(supplicant.path()));
    terminal.wait_for("Network number: ");
    terminal.type("1\n");
    terminal.wait_for("Wi-Fi password: ");
    terminal.wait_for_echo(false);
    terminal.type("short\n");
    EXPECT_EQ(terminal.finish(),
              (Outcome{ 1,
                        "1.   Home2  [WPA personal, -50 dBm]\r\nNetwork number: 1\r\n"
                        "Wi-Fi password: \r\n"
                        "corvane-wifi: A WPA password must contain 8 to 63 UTF-8 bytes.\r\n",
                        "" }));
    EXPECT_TRUE(terminal.echoes());
}
