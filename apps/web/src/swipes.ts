// Swipes to the left and right over an element.

/** In points; shorter ways are taps that slipped. */
const shortestSwipe = 56;
/** In points from the screen's edge, where the system's own gestures begin. */
const edge = 20;

export function followSwipes(
  element: HTMLElement,
  actions: { readonly left: () => void; readonly right: () => void },
): void {
  let start: { readonly x: number; readonly y: number } | undefined;
  element.addEventListener(
    "touchstart",
    (event) => {
      const touch = event.touches[0];
      const isOne = touch && event.touches.length === 1;
      const isFree = touch && touch.clientX > edge && touch.clientX < window.innerWidth - edge;
      start = isOne && isFree ? { x: touch.clientX, y: touch.clientY } : undefined;
    },
    { passive: true },
  );
  element.addEventListener(
    "touchend",
    (event) => {
      const touch = event.changedTouches[0];
      if (!touch || !start) return;
      const x = touch.clientX - start.x;
      const y = touch.clientY - start.y;
      start = undefined;
      // A screen may have come over the element while the finger was on its way.
      if (!element.contains(document.elementFromPoint(touch.clientX, touch.clientY))) return;
      if (Math.abs(x) < shortestSwipe || Math.abs(x) < 2 * Math.abs(y)) return;
      if (x < 0) actions.left();
      else actions.right();
    },
    { passive: true },
  );
}
