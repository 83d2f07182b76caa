// The pictures of the introduction, drawn in the page's own colours.
import { make, textButton } from "./dom";

const phone = `<rect x="70" y="14" width="100" height="172" rx="18" class="body"/>
  <circle cx="100" cy="44" r="13" class="lens"/><circle cx="100" cy="44" r="6" class="glass"/>`;
const light = `<circle cx="132" cy="44" r="7" class="light"/>`;
const rays = `<g class="ray"><path d="M132 26v-8M147 33l6-6M152 47h9M146 58l6 6"/></g>`;
const finger = `<path d="M88 260V92c0-24 12-42 30-42s30 18 30 42v168z" class="finger"/>
  <path d="M102 98V78c0-11 6-18 16-18s16 7 16 18v20c0 5-3 7-8 7h-16c-5 0-8-2-8-7z" class="nail"/>
  <path d="M100 134q18 7 36 0M102 142q16 6 32 0" class="crease"/>`;
const glow = `<circle cx="122" cy="46" r="30" class="glow"/>`;

const pictures: Readonly<Record<string, string>> = {
  "dummyimg1.png": `${phone}${light}${rays}
    <circle cx="120" cy="138" r="25" class="button"/><circle cx="120" cy="138" r="30" class="ring"/>
    <path d="M112 126l20 12-20 12z" class="play"/>`,
  "dummyimg2.png": `${phone}<g transform="translate(-36 -36) rotate(8 118 200)">${finger}</g>${glow}${light}`,
  "dummyimg3.png": `<rect x="40" y="36" width="160" height="120" rx="18" class="body"/>
    <path d="M56 104h26l9-22 16 48 15-62 12 36h50" class="curve"/>
    <circle cx="172" cy="62" r="14" class="track"/><path d="M172 48a14 14 0 1 1-12.1 7" class="part"/>`,
  "dummyimg4.png": `<path d="M62 144a66 66 0 1 1 116 0" class="track wide"/><path d="M62 144a66 66 0 0 1 80-94" class="part wide"/>
    <path d="M120 112l22-48" class="needle"/><circle cx="120" cy="112" r="7" class="hub"/>
    <circle cx="120" cy="154" r="26" class="button"/><path d="M109 154l8 9 15-17" class="check"/>`,
};

/** The picture as SVG; empty for a name that none has. */
export function illustration(name: string): string {
  const picture = pictures[name];
  if (!picture) return "";
  return `<svg viewBox="0 0 240 200" role="img" aria-hidden="true">${picture}</svg>`;
}

function picture(description: `div.${string}`, name: string): HTMLElement {
  const holder = make(description);
  holder.innerHTML = illustration(name);
  return holder;
}

/** A finger that finds lens and light. */
export function fingerPicture(): HTMLElement {
  return picture("div.wait-picture", "dummyimg2.png");
}

/** A curve that somebody waits for. */
export function curvePicture(): HTMLElement {
  return picture("div.illustration", "dummyimg3.png");
}

/** In place of what is not there yet, with the way to it. */
export function emptyState(text: string, measureNow: () => void): HTMLElement {
  const button = textButton("button.measure-now", "Measure now", measureNow);
  return make("div.empty", {}, curvePicture(), make("p", {}, text), button);
}
