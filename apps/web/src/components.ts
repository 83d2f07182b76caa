// The components of the library that the first screen uses.
import { defineCustomElement as app } from "@ionic/core/components/ion-app.js";
import { defineCustomElement as button } from "@ionic/core/components/ion-button.js";
import { defineCustomElement as buttons } from "@ionic/core/components/ion-buttons.js";
import { defineCustomElement as content } from "@ionic/core/components/ion-content.js";
import { defineCustomElement as header } from "@ionic/core/components/ion-header.js";
import { defineCustomElement as icon } from "ionicons/components/ion-icon.js";
import { defineCustomElement as nav } from "@ionic/core/components/ion-nav.js";
import { defineCustomElement as title } from "@ionic/core/components/ion-title.js";
import { defineCustomElement as toolbar } from "@ionic/core/components/ion-toolbar.js";
import { initialize } from "@ionic/core/components";

import { calmer } from "./dom";

export function defineComponents(): void {
  // One look on every phone, and no motion for those whom it makes ill.
  initialize({
    mode: "ios",
    animated: !calmer.matches,
  });
  const definitions = [app, nav, header, toolbar, title, buttons, button, icon, content];
  for (const define of definitions) define();
}
