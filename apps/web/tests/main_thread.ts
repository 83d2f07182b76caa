// What a page's main thread does, in processor time: neighbours on the same machine do not count.
import type { Visit } from "./browser";

interface TraceEvent {
  readonly ph: string;
  readonly name: string;
  readonly pid: number;
  readonly tid: number;
  readonly args: { readonly name?: string };
  /** Microseconds, of the clock and of the thread's own processor time. */
  readonly dur?: number;
  readonly tdur?: number;
}

export interface Spent {
  /** Milliseconds of processor time. */
  readonly processor: number;
  readonly elapsed: number;
}

export interface MainThread {
  /** Every run of the thread without a pause. */
  readonly tasks: readonly Spent[];
  /** Those parts of the tasks that are the page's own code. */
  readonly calls: readonly Spent[];
}

/** Follows the main thread of the page while something goes on. */
export async function followMainThread(
  visit: Visit,
  during: () => Promise<void>,
): Promise<MainThread> {
  const session = await visit.context.newCDPSession(visit.page);
  const events: TraceEvent[] = [];
  session.on("Tracing.dataCollected", ({ value }) => {
    events.push(...(value as unknown as TraceEvent[]));
  });
  await session.send("Tracing.start", {
    transferMode: "ReportEvents",
    traceConfig: { includedCategories: ["toplevel", "devtools.timeline"] },
  });
  await during();
  const complete = new Promise((done) => {
    session.once("Tracing.tracingComplete", done);
  });
  await session.send("Tracing.end");
  await complete;
  await session.detach();

  const threads = new Set(
    events
      .filter(({ ph, name, args }) => {
        return ph === "M" && name === "thread_name" && args.name === "CrRendererMain";
      })
      .map(({ pid, tid }) => `${pid} ${tid}`),
  );
  // What ran already when the following began, or still when it ended, has no time of its own.
  const spent = (wanted: RegExp): Spent[] =>
    events
      .filter(({ ph, name, pid, tid, tdur }) => {
        const isWhole = ph === "X" && tdur !== undefined;
        return isWhole && wanted.test(name) && threads.has(`${pid} ${tid}`);
      })
      .map(({ dur = NaN, tdur = NaN }) => ({ processor: tdur / 1000, elapsed: dur / 1000 }));
  return { tasks: spent(/^ThreadControllerImpl::RunTask$/), calls: spent(/^FunctionCall$/) };
}
