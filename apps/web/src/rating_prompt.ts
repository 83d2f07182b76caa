// Asks once whether the user would rate the application.
import { make, sheetButtons, sheetCard, showModal } from "./dom";

export function showRatingPrompt(rate: () => void): void {
  const dialog = make("dialog.sheet", { "aria-labelledby": "rating-title" });
  const close = (): void => {
    dialog.close();
    dialog.remove();
  };
  const yes = make("button", { type: "button" }, "Rate Veyla");
  yes.addEventListener("click", () => {
    close();
    rate();
  });
  const no = make("button", { type: "button" }, "No, thanks");
  no.addEventListener("click", close);
  dialog.append(
    sheetCard(
      make("h2", { id: "rating-title" }, "Do you like Veyla?"),
      make("p", {}, "A rating helps others to find it."),
      sheetButtons(yes, no),
    ),
  );
  document.body.append(dialog);
  showModal(dialog);
}
