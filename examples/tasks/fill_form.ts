// Fills in a form of a GTK application, sends it and checks what arrived.
//
// usage: node fill_form.ts    (Node 24; older ones run what tsc makes of it)
//
// The form is zenity's, of version 3: in GTK 4 the items of the list of sizes have no names. `quil` is found on PATH, or inside
// the client's package.
import { spawn } from "node:child_process";
import { text } from "node:stream/consumers";
import { Desktop, expect } from "quil";

const FORM = ["--forms", "--title=Order", "--text=New order", "--separator=|", "--add-entry=Customer", "--add-password=Code",
    "--add-combo=Size", "--combo-values=Small|Medium|Large", "--add-entry=Remarks"];

await using desktop = new Desktop();
const program = spawn("zenity", FORM, { stdio: ["ignore", "pipe", "inherit"] });
const output = text(program.stdout);
try {
    const order = desktop.getByRole("window", "Order");
    await order.waitFor("visible", { timeout: 30 });
    // These fields do not tell their names, and the last one comes first.
    const [remarks, code, customer] = await order.getByRole("textbox").all();
    await customer!.fill("Ada Lovelace");
    await code!.fill("1815");
    await order.getByRole("combobox").select("Medium");
    await remarks!.fill("Grüße, 世界");
    await expect(customer!).toHaveValue("Ada Lovelace");
    await order.getByRole("button", "OK", { exact: true }).click();
    await order.waitFor("gone");
    const arrived = (await output).trim();
    console.log(arrived);
    process.exitCode = arrived === "Ada Lovelace|1815|Medium|Grüße, 世界" ? 0 : 1;
} finally {
    program.kill();
}
