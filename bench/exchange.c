// SPDX-License-Identifier: MIT
// Copyright (c) The corvane-wifi authors

/*
 * exchange SOCKET REQUEST...  sends each request as corvane-wifi does, prints the replies: the
 *                             least that such a program can cost.
 * exchange --serve SOCKET     answers with replies as long as wpa_supplicant's can be.
 */

#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

static struct sockaddr_un address(const char* path)
{
    struct sockaddr_un result = {.sun_family = AF_UNIX};
    strncpy(result.sun_path, path, sizeof(result.sun_path) - 1);
    return result;
}

ssize_t exchange(const char* server, const char* request, char* reply, size_t size);

static int serve(const char* path)
{
    static const char status[] = "bssid=02:00:00:00:01:00\nfreq=2437\nssid=Caf\xc3\xa9\nid=0\n"
                                 "mode=station\npairwise_cipher=CCMP\ngroup_cipher=CCMP\n"
                                 "key_mgmt=WPA2-PSK\nwpa_state=COMPLETED\nip_address=10.0.0.7\n"
                                 "address=02:00:00:00:00:00\nuuid=0\n";
    static const char saved[] = "network id / ssid / bssid / flags\n0\tNetwork 0\tany\t[CURRENT]\n"
                                "1\tNetwork 1\tany\t[DISABLED]\n";
    char scan[4096];
    size_t used = (size_t)sprintf(scan, "bssid / frequency / signal level / flags / ssid\n");
    for (int i = 0; i < 67; ++i)
        used += (size_t)sprintf(scan + used,
                                "02:00:00:00:%02x:00\t%d\t-%d\t[WPA2-PSK-CCMP][ESS]\t"
                                "Network %d\n",
                                i, 2412 + 5 * (i % 13), 40 + i % 50, i);

    const int server = socket(AF_UNIX, SOCK_DGRAM, 0);
    const struct sockaddr_un own = address(path);
    if (bind(server, (const struct sockaddr*)&own, sizeof(own)) != 0)
        return 1;
    for (;;) {
        char request[256] = "";
        struct sockaddr_un peer;
        socklen_t length = sizeof(peer);
        if (recvfrom(server, request, sizeof(request) - 1, 0, (struct sockaddr*)&peer, &length) < 0)
            return 1;
        const char* reply = "OK\n";
        size_t size = 3;
        if (strcmp(request, "STATUS") == 0)
            reply = status, size = sizeof(status) - 1;
        else if (strcmp(request, "SCAN_RESULTS") == 0)
            reply = scan, size = used;
        else if (strcmp(request, "LIST_NETWORKS") == 0)
            reply = saved, size = sizeof(saved) - 1;
        else if (strcmp(request, "ADD_NETWORK") == 0)
            reply = "2\n", size = 2;
        sendto(server, reply, size, 0, (const struct sockaddr*)&peer, length);
    }
}

/// Sends one request as corvane-wifi does. The size of the reply, or -1.
ssize_t exchange(const char* server, const char* request, char* reply, size_t size)
{
    static unsigned int serial = 0;
    char path[64];
    sprintf(path, "/tmp/exchange-%d-%u", (int)getpid(), serial++);
    const int client = socket(AF_UNIX, SOCK_DGRAM, 0);
    const struct sockaddr_un own = address(path);
    const struct sockaddr_un peer = address(server);
    struct pollfd waiting = {client, POLLIN, 0};
    unlink(path);
    if (bind(client, (const struct sockaddr*)&own, sizeof(own)) != 0
        || chmod(path, S_IRUSR | S_IWUSR) != 0
        || connect(client, (const struct sockaddr*)&peer, sizeof(peer)) != 0
        || send(client, request, strlen(request), 0) < 0 || poll(&waiting, 1, 3000) <= 0)
        return -1;
    const ssize_t received = recv(client, reply, size, 0);
    close(client);
    unlink(path);
    return received;
}

int main(int argc, char** argv)
{
    static char reply[65536];
    if (argc == 3 && strcmp(argv[1], "--serve") == 0)
        return serve(argv[2]);
    for (int i = 2; i < argc; ++i) {
        const ssize_t size = exchange(argv[1], argv[i], reply, sizeof(reply));
        if (size < 0 || write(STDOUT_FILENO, reply, (size_t)size) != size)
            return 1;
    }
    return 0;
}
