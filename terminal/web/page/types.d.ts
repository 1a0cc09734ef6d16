// SPDX-License-Identifier: MIT
// Shapes that the page's modules share: the messages of ../messages.h, views, and what elements are made of.
import type { chinese } from "./chinese.js";

// What the page shows in the customer's language.
export type Text = keyof typeof chinese;

// From the terminal.

export interface SignatureField {
  width: number;
  height: number;
  max_points: number;
  max_pressure: number;
  max_time_ms: number;
}

export interface UnitMessage {
  type: "unit";
  signature: SignatureField;
  max_digits: number;
  max_stars: number;
  max_lines: number;
  picture_directory: string;
}

export type ScreenKind =
  | "idle" | "teller_card" | "evaluation" | "information" | "html" | "keypad" | "document" | "confirm" | "signing"
  | "hand_sign" | "checkout";

export interface ScreenKey {
  role: "plain" | "confirm" | "cancel" | "sign";
  name: string;
  label: Text;
}

export interface TellerCard {
  name: string;
  number: string;
  stars: number;
  photo: string;
}

export interface ScreenMessage {
  type: "screen";
  number: number;
  kind: ScreenKind;
  title: Text;
  text: string;
  second_text: string;
  documents: string[];
  keys: ScreenKey[];
  teller: TellerCard | null;
  voice: string;
  location: string;
  countdown: number;
  hides_digits: boolean;
  time_left_ms: number;
}

export interface NoEntry {
  type: "entry";
  number: 0;
}

export interface Entry {
  type: "entry";
  number: number;
  what: "pin" | "number";
  min: number;
  max: number;
  again: boolean;
  prompt: string;
  display: "clear" | "stars" | "nothing";
  keyed: number;
  shown: string;
  time_left_ms: number;
}

export interface TraceLine {
  time_ms: number;
  from: "host" | "terminal" | "customer" | "note";
  text: string;
}

export interface TraceMessage {
  type: "trace";
  lines: TraceLine[];
}

export interface FilesMessage {
  type: "files";
  paths: string[];
}

export interface Link {
  plugged: boolean;
  pluggable: boolean;
  faults: string;
}

export interface LinkMessage extends Link {
  type: "link";
}

export type FromTerminal =
  | UnitMessage | ScreenMessage | Entry | NoEntry | TraceMessage | FilesMessage | LinkMessage;

// To the terminal.

export type Point = [x: number, y: number, pressure: number, time_ms: number];
export type ActKind = "key" | "digits" | "sign" | "confirm" | "cancel" | "walk_away";
export type PadKey =
  | "0" | "1" | "2" | "3" | "4" | "5" | "6" | "7" | "8" | "9" | "back" | "clear" | "enter" | "cancel";

export type ToTerminal =
  | { type: "act"; screen: number; kind: ActKind; text: string; strokes?: Point[] }
  | { type: "press"; entry: number; key: PadKey }
  | { type: "plug"; plugged: boolean }
  | { type: "faults"; rates: string };

export type Send = (message: ToTerminal) => void;
export type Act = (kind: ActKind, text?: string, strokes?: Point[]) => void;

// A part of the page: `onkey` takes keys of the keyboard, `stop` ends what would go on without it.
export interface Part {
  element: HTMLElement;
  onkey?: (event: KeyboardEvent) => void;
  stop?: () => void;
}

export interface View extends Part {
  title: string;
  update?: (entry: Entry) => void;
}

// What a view of a screen needs besides the screen.
export interface Surroundings {
  act: Act;
  unit: UnitMessage;
  files: string[];
}

// "button" and "button.big" make a button.
type TagOf<Kind extends string> = Kind extends `${infer Tag}.${string}` ? Tag : Kind;
export type ElementOf<Kind extends string> =
  TagOf<Kind> extends keyof HTMLElementTagNameMap ? HTMLElementTagNameMap[TagOf<Kind>] : never;

// true: without a value; false, null: left out. A function listens to the event behind "on".
export type Attributes = Record<string, string | number | boolean | null | undefined | ((event: Event) => void)>;
export type Child = Node | string | false | null | undefined;

// What the page uses of the PDF reader.

export interface PdfViewport {
  width: number;
  height: number;
}

export interface PdfDrawing {
  promise: Promise<void>;
  cancel(): void;
}

export interface PdfPage {
  getViewport(options: { scale: number }): PdfViewport;
  render(options: { canvasContext: CanvasRenderingContext2D; viewport: PdfViewport }): PdfDrawing;
}

export interface PdfDocument {
  numPages: number;
  getPage(number: number): Promise<PdfPage>;
}

export interface PdfLoading {
  promise: Promise<PdfDocument>;
  destroy(): Promise<void>;
}

export interface PdfLibrary {
  GlobalWorkerOptions: { workerSrc: string };
  getDocument(options: { data: ArrayBuffer; isEvalSupported: boolean; enableXfa: boolean }): PdfLoading;
}

declare global {
  var pdfjsLib: PdfLibrary;
}
