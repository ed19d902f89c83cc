# SPDX-License-Identifier: MIT
# Nobody has decided these addresses yet; until then, placeholders stand in for them. Replace what
# is on the right of each line, and run, once:
#     git grep -l 'corvane.wifi\.invalid\|invalid\.corvane' -- . ':!release/addresses.sed' |
#         xargs sed -i -f release/addresses.sed
s|maintainers@corvane-wifi\.invalid|UNDECIDED: who answers mail about the packages|
s|security@corvane-wifi\.invalid|UNDECIDED: who answers reports of security problems|
s|https://corvane-wifi\.invalid/corvane-wifi\.git|UNDECIDED: where to clone|
s|https://corvane-wifi\.invalid/corvane-wifi|UNDECIDED: where to read the sources and report bugs|
s|https://corvane-wifi\.invalid/releases|UNDECIDED: where the releases are|
s|https://corvane-wifi\.invalid|UNDECIDED: the home page|
s|invalid\.corvane_wifi|UNDECIDED: the domain, reversed|
