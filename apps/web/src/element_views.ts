// The elements of a screen as the core drives them.
import { calmer } from "./dom";
import type { DisplayViews, Pose } from "./page";

function keyframe({ opacity, scale, x, y }: Pose): Keyframe {
  // Somebody whom motion makes ill still sees what comes and what goes.
  if (calmer.matches) return { opacity };
  return { opacity, transform: `translate(${x}px, ${y}px) scale(${scale})` };
}

export class ElementViews implements DisplayViews {
  /** What an element plays, and the number under which its end is waited for. */
  private readonly playing = new Map<HTMLElement, { animation: Animation; pending: number }>();

  /**
   * Element by name. `settle` answers what waits for the end of an animation, 1 for over, 0 for
   * cancelled; `redraw` is called for widgets that draw themselves.
   */
  constructor(
    private readonly elements: ReadonlyMap<string, HTMLElement>,
    private readonly settle: (pending: number, answer: number) => void,
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
      this.cancel(view);
      this.show(view, opacity);
    });
  }

  setHidden(element: string, hidden: boolean): void {
    this.with(element, (view) => {
      view.toggleAttribute("data-hidden", hidden);
    });
  }

  setShimmering(element: string, shimmering: boolean): void {
    this.with(element, (view) => {
      view.classList.toggle("shimmering", shimmering);
    });
  }

  animate(
    element: string,
    seconds: number,
    poses: readonly Pose[],
    endsVisible: boolean,
    pending: number,
  ): void {
    const view = this.elements.get(element);
    if (!view) {
      this.settle(pending, 1);
      return;
    }
    const wasVisible = view.style.opacity !== "0";
    this.cancel(view);
    // The animation covers what stays when it is over.
    this.show(view, endsVisible ? 1 : 0);
    const keyframes = wasVisible || endsVisible ? poses.map(keyframe) : [];
    const animation = view.animate(keyframes, { duration: seconds * 1000 });
    this.playing.set(view, { animation, pending });
    animation.onfinish = (): void => {
      // Its end may have been on the way already when it was cancelled.
      if (this.playing.get(view)?.animation !== animation) return;
      this.playing.delete(view);
      this.settle(pending, 1);
    };
  }

  setNeedsDisplay(element: string): void {
    this.redraw(element);
  }

  private cancel(view: HTMLElement): void {
    const played = this.playing.get(view);
    if (!played) return;
    this.playing.delete(view);
    played.animation.cancel();
    this.settle(played.pending, 0);
  }

  private show(view: HTMLElement, opacity: number): void {
    view.style.opacity = String(opacity);
    // What cannot be seen takes no taps and is not read out.
    view.inert = opacity === 0;
    view.ariaBusy = null;
  }

  private with(element: string, change: (view: HTMLElement) => void): void {
    const view = this.elements.get(element);
    if (view) change(view);
  }
}
