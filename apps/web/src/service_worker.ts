// What keeps the application for the time without a network.

export function startServiceWorker(): void {
  if (!("serviceWorker" in navigator) || import.meta.env.DEV) return;
  void navigator.serviceWorker
    .register("./service-worker.js", { scope: "./" })
    .catch((error: unknown) => {
      console.warn("the application is not kept for use without a network", error);
    });
}
