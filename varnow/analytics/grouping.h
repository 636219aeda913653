// Grouped queries: `group_by` and `summarise`, declared with the table, and the statistics that
// they take.
#pragma once

#include <varnow/containers/table.h>
#include <varnow/numerics/statistics.h>

// One row per group, with a column for each formula:
//
//     table r = t.summarise(c("sex", "year"), "n=count(age)", count, "m=mean(age)", mean);
//
// The groups themselves. The rows of the key table tell how many there are, and the array is the
// caller's, also when there is no group in it:
//
//     table keys;
//     table* groups = t.group_by(c("sex", "year"), keys);
//     for (int i = 1; i <= keys.rows; ++i) groups[i - 1].display(keys(i, 1) + " " + keys(i, 2));
//     delete[] groups;
//
// or, so that nobody forgets it, std::unique_ptr<table[]> groups(t.group_by("sex", keys));
