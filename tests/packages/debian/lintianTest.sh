#!/usr/bin/env bash
# What Debian's own checker says of the packages: nothing that is not explained in an override.
#
#   lintianTest.sh PACKAGES
set -euo pipefail
said=$(lintian --allow-root --fail-on error,warning --show-overrides "$1"/*.changes) ||
    { echo "$said" >&2; exit 1; }
echo "$said"
echo "lintian: no error and no warning"
