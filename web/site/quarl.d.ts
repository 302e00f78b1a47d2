// Type declarations of quarl.mjs.

/** One line of a header section. */
export interface LasParam {
  value: string;
  unit: string;
  description: string;
}

/** What the reader noted about the file: 1-based line (0: the whole file). */
export interface LasNote {
  line: number;
  kind: string; // "LASNOTE_SHORT_ROW"
  title: string; // "short row filled"
  message: string;
}

export interface LasSectionInfo {
  name: string;
  type: "parameter" | "definition" | "data" | "header" | "untyped";
  logData: boolean;
  association?: string; // of a data section
  rows?: number; // of a data section
  params?: Record<string, LasParam>; // of any other section
}

export interface LasCurveInfo extends LasParam {
  name: string; // unique: "SFLU:1", "SFLU:2"
  mnemonic: string;
  numeric: boolean;
  count: number;
  nulls: number;
  min: number; // NaN when every value is NULL
  max: number;
}

export interface PlotOptions {
  /** Curves per track; "ILD:log" as the last name puts the track on log scales. */
  tracks?: string[][];
  top?: number;
  bottom?: number;
  height?: number;
  trackWidth?: number;
}

export interface LasDocument {
  readonly name: string;
  readonly version: string;
  readonly las3: boolean;
  readonly wrapped: boolean;
  readonly delimiter: string;
  readonly null: number | undefined;
  readonly well: Record<string, LasParam>;
  readonly params: Record<string, LasParam>;
  readonly sections: LasSectionInfo[];
  readonly curveNames: string[];
  readonly curves: LasCurveInfo[];
  readonly notes: LasNote[];
  readonly notesSummary: string;
  /** A view of the module's memory (no copy), NULL as NaN; valid until free(). */
  curve(name: string, section?: number): Float64Array | null;
  curveNamesOf(section: number): string[];
  curveInfoOf(section: number): LasCurveInfo[];
  toLas(version?: "2.0" | "3.0", name?: string): string;
  toLasWithRepairs(version?: "2.0" | "3.0", name?: string): { text: string; repairs: string[] };
  toCsv(section?: number): string;
  plot(options?: PlotOptions): { svg: string; notes: string[] };
  free(): void;
}

export interface ReadOptions {
  /** Read exactly by the format's rules; lenient by default. */
  strict?: boolean;
  /** The file's name, for the notes and the written text. */
  name?: string;
  /** Hears how far the read is (0 to 100), at each whole percent. */
  onReadProgress?: (percent: number) => void;
  /** Threads for the rows: 1 for this thread alone, 0 for every core; by
   * default Quarl.threads. Only the module with threads has more than one. */
  threads?: number;
}

export interface Quarl {
  /** The version of the library built into the module, such as "0.2.0". */
  readonly version: string;
  /** Threads a read takes by default: every core where the page is
   * cross-origin isolated (the module with threads), else 1. */
  readonly threads: number;
  /** Throws LasReadError when the read fails. */
  read(bytes: Uint8Array, options?: ReadOptions): LasDocument;
  /** Brings a File or Blob into the module's memory in pieces and reads it
   * as read() does; with threads (and no onReadProgress) the read runs on
   * a thread of its own while the pieces arrive. */
  readFile(file: Blob & { name?: string },
           options?: ReadOptions & { onProgress?: (done: number, total: number) => void }): Promise<LasDocument>;
}

export class LasReadError extends Error {
  readonly result: string; // "LASFILE_BAD_FORMAT"
  readonly line: number;
  readonly notes: LasNote[];
}

/** Loads the module: the one with threads where the page is cross-origin
 * isolated (served with Cross-Origin-Opener-Policy: same-origin and
 * Cross-Origin-Embedder-Policy: require-corp) unless threads is false. */
export function load(options?: { wasmBinary?: ArrayBuffer | Uint8Array; threads?: boolean }): Promise<Quarl>;
