# Prints the medians as a table. The row of a "/Tessel" benchmark has its ratio to the "/Bare" one of the same name;
# likewise "/Reply" and "/Dialogue" to "/Tessel", and "/Many" to "/Single".
# Times below 10 microseconds are printed in nanoseconds, those of a pair below 1 microsecond.
def rounded(places): pow(10; places) as $unit | . * $unit | round / $unit;
def base:
  if test("/Tessel") then sub("/Tessel"; "/Bare")
  elif test("/(Reply|Dialogue)") then sub("/(Reply|Dialogue)"; "/Tessel")
  elif test("/Many") then sub("/Many"; "/Single")
  else null end;
def paired: .run_name | test("/(Tessel|Bare)");
def time:
  if .real_time >= (if paired then 1000 else 10000 end) then "\(.real_time / 1000 | rounded(2)) us"
  elif .real_time >= 100 then "\(.real_time | round) ns"
  else "\(.real_time | rounded(1)) ns" end;

[.benchmarks[] | select(.aggregate_name == "median")] | sort_by(.family_index, .per_family_instance_index) as $medians
| ($medians | map({(.run_name): .real_time}) | add) as $times
| ["benchmark", "time", "ratio"],
  ($medians[]
   | (.run_name | base) as $base
   | [ (.run_name | sub("(/(min_time|iterations|repeats):[0-9.]+)*(/real_time)?$"; "")),
       time,
       if $base != null and $times[$base] != null
       then (.real_time / $times[$base] | rounded(3) | tostring) else "-" end ])
| @tsv
