// How long frames take, for whoever measures the page: kept where a test can read it.

declare global {
  interface Window {
    /** Milliseconds on the main thread, a frame of the camera each, drawing included. */
    veylaFrameTimes?: number[];
  }
}

export class FrameTimes {
  private readonly times: number[] = [];

  constructor() {
    window.veylaFrameTimes = this.times;
  }

  frameTaken(milliseconds: number): void {
    this.times.push(milliseconds);
  }

  /** What is drawn belongs to the frame that was taken last. */
  drawn(milliseconds: number): void {
    const last = this.times.length - 1;
    if (last >= 0) this.times[last] = (this.times[last] ?? 0) + milliseconds;
  }
}
