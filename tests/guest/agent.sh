#!/bin/sh
# The first process of a guest: does what the second serial port says, one shell command a line, and
# answers each with its exit status, its output and its errors. Commands run in this very shell, so
# a file descriptor or a variable that one of them sets is there for the next.
#
#   answer:  "=== status N", the output, "=== errors", the errors, "=== end"
#            both texts compressed and in base64, so that a damaged one is noticed
export PATH=/opt/tav:/bin:/usr/bin
mount -t proc proc /proc
mount -t sysfs sysfs /sys
mount -t devtmpfs devtmpfs /dev
stty -F /dev/ttyS1 raw -echo
exec 7<>/dev/ttyS1

echo "=== ready" >&7
while read -r command <&7; do
    eval "$command" </dev/null >/tmp/.output 2>/tmp/.errors 7>&-
    {
        echo "=== status $?"
        gzip -c /tmp/.output | base64
        echo "=== errors"
        gzip -c /tmp/.errors | base64
        echo "=== end"
    } >&7
done
echo "the agent's port is closed" >/dev/console
poweroff -f
