#!/usr/bin/env bash
# The demo's numbers against R, and its page in a browser.
set -euo pipefail
rm -rf out && mkdir -p out
"$VARNOW_BUILD/examples/credit_score" out "$VARNOW_ROOT/examples/data/credit.txt"
cp -r "$VARNOW_ROOT/share/js" out/

for drawing in cap ks histogram rates response network; do
    grep -q '</svg>' "out/$drawing.svg" || { echo "$drawing.svg was not drawn"; exit 1; }
done
Rscript --vanilla "$VARNOW_ROOT/tests/demo/credit_score.R" out "$VARNOW_ROOT/examples/data/credit.txt"

browse()
{
    chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --disable-background-networking \
        --disable-component-update --disable-sync --no-first-run --user-data-dir="$PWD/profile" \
        --enable-logging=stderr "$@" "file://$PWD/out/report.html" 2>browser.log </dev/null
}
# The page as its scripts leave it: the first of the four tabs is open.
browse --dump-dom >page.txt
shown=$(grep -oE '<div id="[A-Za-z]+" class="tabcontent" style="display: (block|none);">' page.txt)
expected='<div id="Data" class="tabcontent" style="display: block;">
<div id="Exploration" class="tabcontent" style="display: none;">
<div id="Model" class="tabcontent" style="display: none;">
<div id="Rating" class="tabcontent" style="display: none;">'
[ "$shown" = "$expected" ] || { echo "tabs: $shown"; exit 1; }
if grep CONSOLE browser.log | grep -v gnuplot | grep -v canvas; then exit 1; fi
for image in cap ks histogram rates response network; do
    grep -q "src=\"$image.svg\"" page.txt || { echo "the page shows no $image.svg"; exit 1; }
done
