// A page opened as report.html?update=60 loads itself again every 60 seconds, so that a report that a long
// run rewrites stays fresh on the screen.
"use strict";

(function () {
  const seconds = Number(new URLSearchParams(location.search).get("update"));
  if (seconds > 0) setTimeout(function () { location.reload(); }, 1000 * seconds);
})();
