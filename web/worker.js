// One run of the program, in a worker of its own: takes the files of the user, leaves what the program wrote.
//   in   { files: [{ path, bytes }], words }   words: those of the command line, paths from the folder of the files
//   out  { progress }  lines of the program, as they come
//        { status, outputs: [{ path, bytes }] }  at the end; the program's exit status

const INPUT = "/input", OUTPUT = "/output";

// A standard stream of the program that hands on what was written at each end of a line.
function lines(take) {
  let bytes = [];
  return (byte) => {
    if (byte !== 10 && byte !== 13) return bytes.push(byte);
    const line = new TextDecoder().decode(new Uint8Array(bytes));
    bytes = [];
    if (line) take(line);
  };
}

function makeFolder(system, path) {
  path.split("/").slice(1).reduce((parent, name) => {
    const folder = `${parent}/${name}`;
    if (!system.analyzePath(folder).exists) system.mkdir(folder);
    return folder;
  }, "");
}

function putFiles(system, files) {
  for (const folder of [INPUT, OUTPUT]) makeFolder(system, folder);
  for (const { path, bytes } of files) {
    const whole = `${INPUT}/${path}`;
    makeFolder(system, whole.slice(0, whole.lastIndexOf("/")));
    system.writeFile(whole, bytes);
  }
  system.chdir(INPUT);
}

function takeFiles(system, folder, files = []) {
  for (const name of system.readdir(folder)) {
    const path = `${folder}/${name}`;
    if (name === "." || name === "..") continue;
    if (system.isDir(system.stat(path).mode)) takeFiles(system, path, files);
    else files.push({ path: path.slice(OUTPUT.length + 1), bytes: system.readFile(path) });
  }
  return files;
}

onmessage = async ({ data: { files, words } }) => {
  const told = lines((progress) => postMessage({ progress }));
  const program = await vornProgram({ stdin: () => null, stdout: told, stderr: told });
  putFiles(program.FS, files);
  const status = program.callMain([...words, "-C", OUTPUT]);
  postMessage({ status, outputs: takeFiles(program.FS, OUTPUT) });
};
