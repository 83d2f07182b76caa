// The pictures of the introduction, drawn in the page's own colours.
import { make, textButton } from "./dom";

const back = (x: number): string =>
  `<rect x="${x}" y="14" width="100" height="172" rx="18" class="body"/>`;
const lens = `<circle r="13" class="lens"/><circle r="6" class="glass"/>`;
const light = `<circle r="7" class="light"/>`;
const rays = `<path d="M0-13v-7M10-10l5-5M13 0h7M10 10l5 5" class="ray"/>`;
const at = (x: number, y: number, what: string): string =>
  `<g transform="translate(${x} ${y})">${what}</g>`;
/** Its tip about the origin, lit through. */
const hand = `<g class="hand">
  <path d="M-32 230V14c0-26 13-44 32-44s32 18 32 44v216z" class="finger"/>
  <path d="M-16 22V2c0-11 6-18 16-18s16 7 16 18v20c0 5-3 7-8 7h-16c-5 0-8-2-8-7z" class="nail"/>
  <path d="M-18 62q18 7 36 0M-16 70q16 6 32 0" class="crease"/>
  <path d="M-32 40V14c0-26 13-44 32-44s32 18 32 44v26q-32 16-64 0z" class="glow"/>
  <path d="M-23 26V10c0-18 9-31 23-31s23 13 23 31v16q-23 11-46 0z" class="glow"/></g>`;
/** What lies below the finger. */
const below = (radius: number): string => `<circle r="${radius}" class="below"/>`;

const pictures: Readonly<Record<string, string>> = {
  "dummyimg1.png": `${at(-54, 0, back(70))}${at(54, 0, back(70))}
    <path d="M58 22h16" class="slot"/>
    <path d="M30 66a17 17 0 0 1 32 0M70 66a17 17 0 0 1 32 0" class="track"/>
    <path d="M46 66l-6-13M86 66l7-13" class="needle"/>
    ${at(66, 136, `<circle r="29" class="ring"/><circle r="24" class="button"/><text y="4" font-size="11">START</text>`)}
    ${at(152, 48, lens)}${at(184, 48, light + rays)}`,
  "dummyimg2.png": `${back(70)}${at(100, 54, lens)}${at(100, 54, `<g transform="rotate(12)">${hand}</g>`)}
    ${at(100, 54, below(13))}${at(143, 52, light + rays)}`,
  "dummyimg3.png": `<rect x="40" y="36" width="160" height="120" rx="18" class="body"/>
    <path d="M56 104h26l9-22 16 48 15-62 12 36h50" class="curve"/>
    <circle cx="172" cy="62" r="14" class="track"/><path d="M172 48a14 14 0 1 1-12.1 7" class="part"/>`,
  "dummyimg4.png": `<path d="M62 144a66 66 0 1 1 116 0" class="track wide"/><path d="M62 144a66 66 0 0 1 80-94" class="part wide"/>
    <path d="M120 112l22-48" class="needle"/><circle cx="120" cy="112" r="7" class="hub"/>
    <circle cx="120" cy="154" r="26" class="button"/><path d="M109 154l8 9 15-17" class="check"/>`,
};

const both = `${back(70)}${at(106, 52, lens)}${at(136, 52, light + rays)}
  ${at(120, 56, `<g transform="rotate(10) scale(1.1)">${hand}</g>`)}${at(106, 52, below(13))}${at(136, 52, below(7))}`;

const drawing = (shapes: string): string =>
  `<svg viewBox="0 0 240 200" role="img" aria-hidden="true">${shapes}</svg>`;

/** The picture as SVG; empty for a name that none has. */
export function illustration(name: string): string {
  const picture = pictures[name];
  return picture ? drawing(picture) : "";
}

function picture(description: `div.${string}`, svg: string): HTMLElement {
  const holder = make(description);
  holder.innerHTML = svg;
  return holder;
}

/** A finger that finds both lens and light. */
export function fingerPicture(): HTMLElement {
  return picture("div.wait-picture", drawing(both));
}

/** A curve that somebody waits for. */
export function curvePicture(): HTMLElement {
  return picture("div.illustration", illustration("dummyimg3.png"));
}

/** In place of what is not there yet, with the way to it. */
export function emptyState(text: string, measureNow: () => void): HTMLElement {
  const button = textButton("button.measure-now", "Measure now", measureNow);
  return make("div.empty", {}, curvePicture(), make("p", {}, text), button);
}
