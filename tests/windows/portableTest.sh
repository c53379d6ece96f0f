#!/usr/bin/env bash
# The check of what only GNU's compiler takes, against sources that it must refuse, and one that it
# must not.
#
#   portableTest.sh CHECK
set -euo pipefail
check=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/root/quil" "$work/headers"

# expect STATUS TEXT SOURCE: the check ends with this status and says this of the source.
expect() {
    local status=0
    printf '%s\n' "$3" >"$work/root/quil/a.cpp"
    "$check" "$work/root" "$work/headers" >"$work/said" 2>&1 || status=$?
    if [ "$status" -ne "$1" ] || ! grep -qF -- "$2" "$work/said"; then
        echo "$3"
        echo "expected status $1 and: $2"
        echo "got status $status and:"
        cat "$work/said"
        exit 1
    fi
}

expect 0 '1 files, 1 of them compiled' '
// __attribute__ in a comment, and below in a text, is nobody'\''s.
#include <array>
#include <charconv>
int line(int value = __builtin_LINE()) { return value; }
const char* text() { return "__builtin_expect \" ssize_t"; }
char* put(std::array<char, 9>& to) { return std::to_chars(to.data(), to.data() + 9, 1).ptr; }'
# The words, in one file.
expect 1 'quil/a.cpp:4: __builtin_expect is GNU'\''s' '
#include <string.h>
#include <unistd.h>
bool rare(bool b) { return __builtin_expect(b, false); }
__attribute__((cold)) int same(const char* a, const char* b) { return strcasecmp(a, b); }'
for word in '3: #include <unistd.h' '5: __attribute__' '5: strcasecmp'; do
    grep -qF "quil/a.cpp:$word is GNU's" "$work/said" || { cat "$work/said"; exit 1; }
done
# What compiling tells, one fault a line.
expect 1 'a.cpp:4:' '
#include <array>
#include <charconv>
char* put(std::array<char, 9>& to) { return std::to_chars(to.begin(), to.end(), 1).ptr; }
#include <string_view>
const char* first(std::string_view text) { return text.begin(); }
struct Tail { int count; char bytes[0]; };
int sum(int count) { int values[count]; return values[0]; }
int either(int a, int b) { return a ?: b; }
int twice(int a) { return ({ int b = a; b + b; }); }
int label() { void* place = &&here; here: return place != nullptr; }
int kind(int a) { switch (a) { case 1 ... 3: return 1; default: return 0; } }
struct Pair { int x, y; } pair = {x: 1, y: 2};'
for line in 6 7 8 9 10 11 12 13; do
    grep -q "a.cpp:$line:" "$work/said" || { echo "nothing about line $line"; cat "$work/said"; exit 1; }
done
