// Asks the compiler and the language service of TypeScript what they make of the declarations, and prints JSON: cases, and a
// problem or null for each.
//
//     node judge.js FOLDER EXAMPLE.js...     FOLDER holds node_modules and tsconfig.json, the one that authors are told of
"use strict";
const fs = require("fs");
const path = require("path");

const [folder, ...examples] = process.argv.slice(2).map((name) => path.resolve(name));
const ts = require(require.resolve("typescript", { paths: [folder] }));

const BEFORE = `
const crypto = new ActiveXObject("VetrelCorvane2.CryptoService");
const service = new ActiveXObject("VetrelCorvane2.BinaryObjectService");
const data = service.CreateStream().Read(0);
const signer = crypto.FindCertificate("");
const files = new ActiveXObject("VetrelCorvane2.FileSystemService");
`;
// Name, the compiler's number of the error, and what is wrong.
const MISTAKES = [
    ["right calls", 0, "crypto.Sign(data, signer).ToFile('x'); crypto.Encrypt(data, [signer, signer]); crypto.SignAsync(data, signer, () => {});"],
    ["values of many types", 0, `
        const archive = new ActiveXObject("VetrelCorvane2.CompressionService").OpenZipArchive(files.OpenFile("x"));
        archive.ExtractAsync(0, () => {}, 5, null); archive.ExtractStream("x", files.OpenFile("y"), 5);
        crypto.CreateCertificationRequestExV2("x", 1, data, data, null, false, true);
        crypto.InspectStreamSignatureAsync(files.OpenFile("x"), null, () => {}, null, crypto.GetCertificates());
        crypto.AddSignerToSignature(data, null, signer); crypto.EncryptAsync(data, signer, () => {});
        const bytes: number[] = new VBArray(data.ToArray(1, 2)).toArray();
        import Corvane = VetrelCorvane2;
        files.OpenFile("x", Corvane.FileAccess.GENERIC_WRITE + Corvane.FileAccess.GENERIC_READ, Corvane.FileCreationDisposition.CREATE_ALWAYS);
        const done: Corvane.Callback<Corvane.CertificateCollection> = function (signers, error) {
            if (error === undefined)
                for (const each = new Enumerator(signers); !each.atEnd(); each.moveNext())
                    files.GetLength(each.item().CommonName + new Date(each.item().ValidTo).getFullYear() + bytes[0]);
        };
        crypto.VerifyStreamAttachedSignatureAsync(service.CreateStream(), done, new ActiveXObject("VetrelCorvane2.OperationToken"), [signer]);`],
    ["a member that is not there", 2339, "crypto.Sing(data, signer);"],
    ["a member of another object", 2339, "data.Seek(0);"],
    ["a text for bytes", 2345, "crypto.Sign('text', signer);"],
    ["bytes for a stream", 2345, "service.GetMd5StreamAsync(data, (digest, error) => {});"],
    ["a sum of flags in words", 2345, "files.OpenFile('x', 'rw');"],
    ["an argument is missing", 2554, "crypto.Sign(data);"],
    ["an argument too many", 2554, "crypto.GetTokensInfo(true);"],
    ["bytes taken for a number", 2322, "const sum: number = service.GetMd5(data);"],
    ["a choice that may be cancelled", 2531, "crypto.SelectCertificateFromStore('My', 2).Display();"],
    ["a callback that ignores errors", 2345, "crypto.SignAsync(data, signer, (signature: VetrelCorvane2.BinaryObject) => {});"],
    ["a result before its error was looked at", 18048, "crypto.SignAsync(data, signer, (signature, error) => { signature.Size; });"],
    ["a property that is only read", 2540, "data.Size = 1;"],
    ["a class for instanceof", 2339, "signer instanceof VetrelCorvane2.Certificate;"],
    ["a name of no object", 2339, "new ActiveXObject('VetrelCorvane2.CryptoSevice').Sign(data, signer);"],
    ["an array of the system as one of the language", 2339, "data.ToArray(0, 1).join();"],
];
// A variable that only a callback sets is always null to the compiler.
const KNOWN_NOISE = [18047, 2363];

const read = (name, own) => (name in own ? own[name] : ts.sys.readFile(name));

// A language service over files on disk and those of `own`, names to texts; libraries are read once.
function service(options, own) {
    return ts.createLanguageService({
        getCompilationSettings: () => options,
        getScriptFileNames: () => Object.keys(own),
        getScriptVersion: (name) => String(name in own ? ++versions : 0),
        getScriptSnapshot(name) {
            const text = read(name, own);
            return text === undefined ? undefined : ts.ScriptSnapshot.fromString(text);
        },
        getCurrentDirectory: () => folder,
        getDefaultLibFileName: ts.getDefaultLibFilePath,
        fileExists: (name) => name in own || ts.sys.fileExists(name),
        readFile: (name) => read(name, own),
        directoryExists: ts.sys.directoryExists,
        getDirectories: ts.sys.getDirectories,
        realpath: ts.sys.realpath,
    }, registry);
}
const registry = ts.createDocumentRegistry();
let versions = 0;

const settings = ts.readConfigFile(path.join(folder, "tsconfig.json"), ts.sys.readFile).config;
const { options } = ts.parseJsonConfigFileContent(settings, ts.sys, folder);

function found(options, name, text) {
    const asked = service(options, { [name]: text });
    return [...asked.getSyntacticDiagnostics(name), ...asked.getSemanticDiagnostics(name)];
}
const describe = (each) => `TS${each.code}: ${ts.flattenDiagnosticMessageText(each.messageText, " ")}`;

const cases = {};
const typed = path.join(folder, "typed.ts");
for (const [name, code, text] of MISTAKES) {
    const errors = found(options, typed, BEFORE + text);
    const right = code === 0 ? errors.length === 0 : errors.length === 1 && errors[0].code === code;
    cases[`${code ? "refuses" : "takes"} ${name}`] = right ? null : `expected ${code || "no error"}: ${errors.map(describe).join("; ") || "accepted"}`;
}

// The examples, without the strictness that scripts without types cannot have.
const loose = { ...options, strict: false, allowJs: true, checkJs: true };
for (const example of examples) {
    const errors = found(loose, path.join(folder, path.basename(example)), fs.readFileSync(example, "utf8"));
    const wrong = errors.filter((each) => !KNOWN_NOISE.includes(each.code)).map(describe).join("; ");
    cases[`example ${path.basename(example)}`] = wrong || null;
}

// As the README tells for pages, where the author has nothing but the package and what it depends on.
const ofPage = { ...options, lib: ["lib.es5.d.ts", "lib.dom.d.ts"], types: ["activex-vetrelcorvane2"] };
const PAGE = `(function () {${BEFORE}document.title = new Date(signer.ValidTo) + data.ToHexString(); })();`;
cases["takes a page's script"] = found(ofPage, typed, PAGE).map(describe).join("; ") || null;

// What an editor shows.
const asked = service(options, { [typed]: BEFORE + "crypto.Sign(data, signer);" });
const shown = asked.getQuickInfoAtPosition(typed, BEFORE.length + "crypto.S".length);
const helpstring = ts.displayPartsToString(shown.documentation);
cases["an editor shows the helpstring"] =
    helpstring.startsWith("A detached CMS signature over the data with the certificate's private key.") ? null : helpstring;
const defaults = shown.tags.map((tag) => ts.displayPartsToString(tag.text)).join();
cases["an editor shows a default"] = defaults === "addCertChain [addCertChain=false]" ? null : defaults;

console.log(JSON.stringify(cases));
