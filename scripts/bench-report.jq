# Prints the medians as a table; the row of a "/Tessel" benchmark has its ratio to the "/Bare" one of the same name.
# Times below 10 microseconds are printed in nanoseconds, those of a pair below 1 microsecond.
def rounded(places): pow(10; places) as $unit | . * $unit | round / $unit;
def paired: .run_name | test("/(Tessel|Bare)");
def time:
  if .real_time >= (if paired then 1000 else 10000 end) then "\(.real_time / 1000 | rounded(2)) us"
  elif .real_time >= 100 then "\(.real_time | round) ns"
  else "\(.real_time | rounded(1)) ns" end;

[.benchmarks[] | select(.aggregate_name == "median")] | sort_by(.family_index, .per_family_instance_index) as $medians
| ($medians | map({(.run_name): .real_time}) | add) as $times
| ["benchmark", "time", "ratio to bare"],
  ($medians[]
   | ($times[.run_name | sub("/Tessel"; "/Bare")]) as $bare
   | [ (.run_name | sub("(/(min_time|iterations|repeats):[0-9.]+)*(/real_time)?$"; "")),
       time,
       if (.run_name | contains("/Tessel")) and ($bare != null)
       then (.real_time / $bare | rounded(3) | tostring) else "-" end ])
| @tsv
