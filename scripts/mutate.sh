#!/usr/bin/env bash
# Mutation check: applies a fixed, seeded sample of small faults to the product code one at
# a time and counts how many the test suite catches (details in scripts/mutate.py).
#
#   scripts/mutate.sh --list                  the sample, without building anything
#   scripts/mutate.sh --sample 120 --out F    run it; one line per mutant and a summary
#   options: --sample N (120)  --seed S (2024)  --jobs J (2)
#
# Compare runs by their kill count: the same sources and seed give the same mutants.
set -euo pipefail
here=$(dirname "$0")
"$here/deps.sh"
exec /usr/bin/python3 "$here/mutate.py" "$@"
