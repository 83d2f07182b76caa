// The elements of a screen as the core drives them.
import { calmer } from "./dom";
import type { DisplayViews, Pose } from "./page";

function keyframe({ opacity, scale, x, y }: Pose): Keyframe {
  // Somebody whom motion makes ill still sees what comes and what goes.
  if (calmer.matches) return { opacity };
  return { opacity, transform: `translate(${x}px, ${y}px) scale(${scale})` };
}

export class ElementViews implements DisplayViews {
  /** Element by name; `redraw` is called for widgets that draw themselves. */
  constructor(
    private readonly elements: ReadonlyMap<string, HTMLElement>,
    private readonly redraw: (element: string) => void = () => undefined,
    private readonly showImage: (element: HTMLElement, image: string) => void = () => undefined,
  ) {}

  setText(element: string, text: string): void {
    this.with(element, (view) => {
      if (view.textContent !== text) view.textContent = text;
    });
  }

  setFont(element: string, weight: number, size: number): void {
    this.with(element, (view) => {
      view.style.fontWeight = String(weight);
      view.style.setProperty("--font-size", String(size));
    });
  }

  setImage(element: string, image: string): void {
    this.with(element, (view) => {
      this.showImage(view, image);
    });
  }

  setOpacity(element: string, opacity: number): void {
    this.with(element, (view) => {
      for (const animation of view.getAnimations()) animation.cancel();
      this.settle(view, opacity);
    });
  }

  setHidden(element: string, hidden: boolean): void {
    this.with(element, (view) => {
      view.style.visibility = hidden ? "hidden" : "";
    });
  }

  setShimmering(element: string, shimmering: boolean): void {
    this.with(element, (view) => {
      view.classList.toggle("shimmering", shimmering);
    });
  }

  animate(element: string, seconds: number, poses: readonly Pose[], endsVisible: boolean): void {
    this.with(element, (view) => {
      // The animation covers what stays when it is over.
      this.settle(view, endsVisible ? 1 : 0);
      view.animate(poses.map(keyframe), { duration: seconds * 1000 });
    });
  }

  setNeedsDisplay(element: string): void {
    this.redraw(element);
  }

  private settle(view: HTMLElement, opacity: number): void {
    view.style.opacity = String(opacity);
    // What cannot be seen takes no taps and is not read out.
    view.inert = opacity === 0;
  }

  private with(element: string, change: (view: HTMLElement) => void): void {
    const view = this.elements.get(element);
    if (view) change(view);
  }
}
