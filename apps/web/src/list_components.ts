// The components of the library that the screens behind the first one share. They come with the first of these.
import "./lists.css";

import { defineCustomElement as accordion } from "@ionic/core/components/ion-accordion.js";
import { defineCustomElement as accordionGroup } from "@ionic/core/components/ion-accordion-group.js";
import { defineCustomElement as backButton } from "@ionic/core/components/ion-back-button.js";
import { defineCustomElement as item } from "@ionic/core/components/ion-item.js";
import { defineCustomElement as label } from "@ionic/core/components/ion-label.js";
import { defineCustomElement as list } from "@ionic/core/components/ion-list.js";
import { defineCustomElement as toggle } from "@ionic/core/components/ion-toggle.js";

for (const define of [accordion, accordionGroup, backButton, item, label, list, toggle]) define();
