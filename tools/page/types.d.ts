// The types of the page: the records of the phone, what is drawn of them, and what is used of Cockpit.

interface Key {
  idKey: number;
  dmId: string;
  idAction: number;
  container: string;
  position: number;
  icon: string;
  type: number;
  aom_type: number;
  aom_addr: number;
}

interface Action {
  idAction: number;
  dmId: string;
  type: number;
  action: string;
  webAppName: string;
  arguments: string;
  label: string;
  shortLabel: string;
}

/** Where a key is or could be. */
interface Spot {
  onModule: boolean;
  container: string;
  address: number;
  number: number;
  moduleType: number;
}

/** What the service has sent to a module for a key. */
interface Display {
  icon?: string;
  label?: string;
  labelState?: number;
}

/** A spot as it is drawn. Several keys at one spot have a place each, told apart by the slot. */
interface Place extends Spot {
  place: string;
  slot: string;
  key: Key | null;
  label: string;
  shown: string;
  display: Display;
  isShared: boolean;
  lacksAction: boolean;
  mark: string;
}

/** A container of the set, or an add-on module. */
interface Unit {
  name: string;
  onModule: boolean;
  places: Place[];
}

interface PhoneEvent {
  event: string;
  module: string;
  arguments: { name: string; value: any }[];
}

interface LogEntry extends PhoneEvent {
  number: number;
  time: string;
  text: string;
}

/** A row of "progkeysctl defaults plan --json". */
interface PlanRow {
  what: string;
  kind: "action" | "key";
  id: number | null;
  dmId: string;
  field: string | null;
  old: any;
  new: any;
  record: number | null;
  content: any;
  detail: string;
  reason: string | null;
}

type App = import("./app").App;
type Desk = import("./desk").Desk;
type State = import("./state").State;

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
