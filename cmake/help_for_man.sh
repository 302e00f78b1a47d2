#!/bin/sh
# Runs the program QUARL_MAN_PROGRAM with the arguments help2man gives it
# (--help, --version) and hands on its output with the usage lines in the
# form from which help2man makes a man page's SYNOPSIS: "Usage:" before the
# first form, "or:" before each further one, each form on one line.
"$QUARL_MAN_PROGRAM" "$@" | awk '
/^usage: / { sub(/^usage: /, "Usage: "); held = $0; usage = 1; next }
usage && /^ +\[/ { sub(/^ +/, " "); held = held $0; next }
usage && /^ +quarl-/ { print held; sub(/^ +/, "  or: "); held = $0; next }
{ if (usage) print held; usage = 0; print }
END { if (usage) print held }'
