#!/usr/bin/env python3
"""The hits of two mhhost builds, each on its own index of one store, compared query by query.

    bench/compare_hits.py OLD_MHHOST OLD_INDEX NEW_MHHOST NEW_INDEX --registry FILE

Runs 19 forms of the query language with words of the real-shaped mail, each newest first,
oldest first, by relevance, as a count and from an offset, and prints the runs whose ids,
order or count differ. Both indexes must have been made of the same store by a first run, so
that ids agree. Exit status 1 when any differ.
"""
import argparse
import subprocess
import sys

WORDS = ["some", "froed", "getostinting", "the", "clortness", "martin", "your", "question",
         "slimal", "prer", "tiscacks"]
FORMS = ['%s', '%s %s', '"%s %s"', '%s OR %s', '%s -%s', 'NOT %s %s', '(%s OR %s) %s', '%s*',
         'subject:%s', 'from:%s', 'body:%s %s', '%s date:2010', '%s date:2005-03..2010-09',
         '%s date:..2000', '%s folder:Archive', '%s client:netscape', '%s attachment:pdf',
         '2.5%% %s', '%s and not %s']
VARIANTS = [["--output", "ids", "--limit", "50"],
            ["--output", "ids", "--limit", "50", "--sort", "oldest"],
            ["--output", "ids", "--limit", "50", "--sort", "relevance"],
            ["--count"],
            ["--output", "ids", "--limit", "50", "--offset", "37"]]


def queries():
    for i, form in enumerate(FORMS):
        for draw in range(4):
            words = [WORDS[(i * 3 + draw * 5 + k) % len(WORDS)] for k in range(3)]
            yield (form % tuple(words[:form.count('%s')])).replace('%%', '%')


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    for name in ["old", "old_index", "new", "new_index"]:
        parser.add_argument(name)
    parser.add_argument("--registry", required=True)
    parser.add_argument("--client", default="netscape")
    options = parser.parse_args()

    def hits(mhhost, index, query, variant):
        run = subprocess.run([mhhost, "--client", options.client, "--registry", options.registry,
                              "--db", index, "search", query] + variant,
                             capture_output=True, text=True)
        return run.returncode, run.stdout

    runs = differ = 0
    for query in queries():
        for variant in VARIANTS:
            runs += 1
            old = hits(options.old, options.old_index, query, variant)
            new = hits(options.new, options.new_index, query, variant)
            if old != new:
                differ += 1
                print("differ:", query, " ".join(variant), old[1].split()[:5], new[1].split()[:5])
    print(f"{runs} query runs, {differ} differ")
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main())
