// Before the first paint, which shows the introduction's beginning to those whom the core will show it.
try {
  const isFirst = localStorage.getItem("veyla/pleaseNoteShown") === null;
  document.documentElement.classList.toggle("first-visit", isFirst);
} catch {
  // A browser that keeps nothing shows the introduction at each visit.
  document.documentElement.classList.add("first-visit");
}
