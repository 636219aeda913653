// Tabs of a report: one .tabcontent is shown at a time, and its .tablink bears the colour.
"use strict";

function openPage(name, button, colour) {
  for (const page of document.getElementsByClassName("tabcontent")) {
    page.style.display = page.id === name ? "block" : "none";
  }
  for (const link of document.getElementsByClassName("tablink")) {
    link.style.backgroundColor = link === button ? colour : "";
  }
}

// Follows a link into a chapter of another tab, and opens the first tab of a fresh page.
function openStart() {
  const links = document.getElementsByClassName("tablink");
  if (links.length === 0) return;
  const anchor = location.hash && document.getElementsByName(location.hash.slice(1))[0];
  const page = anchor && anchor.closest(".tabcontent");
  const pages = Array.from(document.getElementsByClassName("tabcontent"));
  links[Math.max(pages.indexOf(page), 0)].click();
  if (anchor) anchor.scrollIntoView();
}

window.addEventListener("load", openStart);
