// SPDX-License-Identifier: MIT

// Plays the person at a terminal:
//
//     typist [TEXT KEYS]... -- COMMAND...
//
// waits for each TEXT on the screen, types KEYS and Enter, and at the end prints all that the
// screen showed, "[echo on]" or "[echo off]" standing where something was typed. KEYS of "#NAME"
// type the number that a list on the screen gives NAME; "^C" is the key of that name.

#include <poll.h>
#include <pty.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

static char screen[65536];
static size_t length;
static int terminal;

static void show(const char* text, size_t size)
{
    if (length + size >= sizeof screen)
        exit(126);
    memcpy(screen + length, text, size);
    length += size;
    screen[length] = '\0';
}

static void show_echo(int side)
{
    struct termios settings;
    const char* text = "[echo unknown]";
    if (tcgetattr(side, &settings) == 0)
        text = settings.c_lflag & ECHO ? "[echo on]" : "[echo off]";
    show(text, strlen(text));
}

// Whether the child waits for a line: only then is its echo off where it asks for a password.
static int is_read(pid_t child)
{
    char path[64];
    long call = -1;
    unsigned long side = 1;
    snprintf(path, sizeof path, "/proc/%d/syscall", (int)child);
    FILE* file = fopen(path, "r");
    if (file != NULL) {
        if (fscanf(file, "%ld %lx", &call, &side) != 2)
            call = -1;
        fclose(file);
    }
    return call == SYS_read && side == STDIN_FILENO;
}

// Reads for as long as `pause_ms` brings something new.
static void look(int pause_ms)
{
    struct pollfd waiting = {terminal, POLLIN, 0};
    while (poll(&waiting, 1, pause_ms) > 0) {
        char text[1024];
        const ssize_t size = read(terminal, text, sizeof text);
        if (size <= 0)
            return;
        for (ssize_t i = 0; i < size; ++i)
            if (text[i] != '\r')
                show(text + i, 1);
    }
}

static void type(const char* keys)
{
    char number[16] = "";
    if (keys[0] == '#') {
        char wanted[128];
        snprintf(wanted, sizeof wanted, " %s  [", keys + 1);
        const char* line = strstr(screen, wanted);
        while (line != NULL && line > screen && line[-1] != '\n')
            --line;
        snprintf(number, sizeof number, "%d", line == NULL ? 0 : atoi(line));
        keys = number;
    }
    if (strcmp(keys, "^C") == 0)
        keys = "\003";
    const size_t size = strlen(keys);
    if (write(terminal, keys, size) != (ssize_t)size
        || (keys[0] != '\003' && write(terminal, "\n", 1) != 1))
        exit(126);
}

int main(int argc, char** argv)
{
    int side;
    int first = 1;
    while (first < argc && strcmp(argv[first], "--") != 0)
        ++first;
    if (first + 1 >= argc || openpty(&terminal, &side, NULL, NULL, NULL) != 0)
        return 125;
    const pid_t child = fork();
    if (child == 0) {
        close(terminal);
        if (login_tty(side) == 0)
            execvp(argv[first + 1], argv + first + 1);
        _exit(127);
    }

    int step = 1;
    int status = 0;
    size_t seen = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        look(50);
        const char* text = step + 1 < first ? strstr(screen + seen, argv[step]) : NULL;
        if (text == NULL)
            continue;
        for (int tries = 0; tries < 200 && !is_read(child); ++tries)
            look(50);
        show_echo(side);
        seen = length;
        type(argv[step + 1]);
        step += 2;
    }
    look(50);
    show_echo(side);
    puts(screen);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
