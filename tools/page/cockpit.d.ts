// What the page uses of Cockpit's library.

interface CockpitClient {
  call(path: string, iface: string, method: string, values: any[], options: { type: string }): Promise<any[]>;
  subscribe(match: Record<string, string>, handler: (path: string, iface: string, signal: string, body: any[]) => void): void;
  addEventListener(name: "owner" | "close", handler: (event: Event, value: any) => void): void;
  close(): void;
}

interface CockpitProcess extends Promise<string> {
  input(text: string): CockpitProcess;
  stream(handler: (output: string) => void): CockpitProcess;
}

declare const cockpit: {
  dbus(name: string, options: { bus: "system" }): CockpitClient;
  spawn(command: string[], options: { err: "message" }): CockpitProcess;
};
