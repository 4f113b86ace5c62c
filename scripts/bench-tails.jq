# Prints the benchmarks that time every round trip by itself as a table, in microseconds.
def microseconds: . * 1e7 | round / 10;

[.benchmarks[] | select(has("trips"))] | sort_by(.family_index)
| if length == 0 then empty else
    ["us", "trips", "median", "90 %", "99 %", "99.9 %", "longest"],
    (.[] | [ (.run_name | sub("/iterations.*"; "")), .trips,
             (.p50, .p90, .p99, ."p99.9", .longest | microseconds) ])
  end
| @tsv
