#!/usr/bin/env bash
# The example's merged result depends neither on who does which task nor on a crash of all workers.
set -euo pipefail
program=$VARNOW_BUILD/examples/portfolio_loss
rm -rf one many && mkdir one many
"$program" one >one.log

"$program" many list
pids=()
for _ in 1 2 3; do "$program" many work >>many.log & pids+=($!); done
sleep 0.2
kill -9 "${pids[@]}" || true # whoever has ended already
wait "${pids[@]}" 2>/dev/null || true

# the operator: the list back under its name, then what was in progress is free again
[ -e many/tasks.txt ] || mv many/tasks.txt_ many/tasks.txt
"$program" many repair
if grep -q 'in progress' many/tasks.txt || [ -e many/tasks.txt_ ]; then ls many; exit 1; fi
"$program" many work >>many.log & first=$!
"$program" many work >>many.log & second=$!
wait "$first"
wait "$second"
"$program" many merge >>many.log
for file in merged.txt merged.sim; do cmp one/$file many/$file; done

# within four standard errors of what the portfolio is expected to lose
awk -F '\t' '{ gsub(",", "."); v[$1] = $2 }
    END { e = v["mean loss"] - v["expected loss"]; if (e < 0) e = -e
          exit !(e < 4 * v["standard deviation"] / sqrt(v["scenarios"]) && v["scenarios"] == 240000) }' one/merged.txt
