# Medians as a table; the line of a "/Tessel" benchmark carries its ratio to the "/Bare" one of the same kind.
def time_us: .real_time / 1000 * 100 | round / 100;

[.benchmarks[] | select(.aggregate_name == "median")] | sort_by(.family_index, .per_family_instance_index) as $medians
| ($medians | map({(.run_name): .real_time}) | add) as $times
| ["benchmark", "microseconds", "ratio to bare"],
  ($medians[]
   | ($times[.run_name | sub("/Tessel"; "/Bare")]) as $bare
   | [ (.run_name | sub("/real_time"; "")),
       (time_us | tostring),
       if (.run_name | contains("/Tessel")) and ($bare != null)
       then (.real_time / $bare * 1000 | round / 1000 | tostring) else "-" end ])
| @tsv
