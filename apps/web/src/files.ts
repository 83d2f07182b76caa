// Files that the page makes for the user.

/** Downloads a text as a file. */
export function saveAsFile(name: string, type: string, text: string): void {
  const url = URL.createObjectURL(new Blob([text], { type }));
  const link = document.createElement("a");
  link.href = url;
  link.download = name;
  link.click();
  // The browser reads it after this returns.
  setTimeout(() => {
    URL.revokeObjectURL(url);
  }, 60_000);
}
