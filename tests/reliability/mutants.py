#!/usr/bin/env python3
"""Mutants of the library for the JNI contract, heap and race suites.

Each mutant is one plausible fault in jni/ or hal/: a release of characters or elements removed or
in the wrong mode, a failed JNI call's handling removed, a steady heap leak, a handle stored or read
without its lock. For each mutant asked for, the file is changed, BUILD_DIR's TARGETS are built,
COMMAND runs (in a shell, from the checkout), and the file is restored (also on Ctrl-C). A mutant
is caught when COMMAND fails. Build nothing else from this checkout meanwhile: it would compile
the mutant too.

usage: tests/reliability/mutants.py BUILD_DIR TARGETS COMMAND [ID...]
       tests/reliability/mutants.py --list
  TARGETS   comma-separated build targets, e.g. KxMMI_jni,reliability_jni_contract_test
  ID        R1, F3, ... (default: every mutant)
example: tests/reliability/mutants.py build/release KxMMI_jni,reliability_jni_contract_test \\
           'build/release/tests/reliability/reliability_jni_contract_test' R1 F5
exit status: 0 every mutant caught, 1 one survived or did not build, 2 command line refused
"""
import os
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

MUTANTS = {
 # releases of elements and characters
 'R1 no ReleaseByteArrayElements': ('jni/factory_commands.cc', 'env->ReleaseByteArrayElements(data, elements, 0);', ''),
 'R2 signature bytes released JNI_ABORT': ('jni/factory_commands.cc', 'env->ReleaseByteArrayElements(data, elements, 0);', 'env->ReleaseByteArrayElements(data, elements, JNI_ABORT);'),
 'R3 no ReleaseIntArrayElements': ('jni/tp_pressure.cc', 'env->ReleaseIntArrayElements(rawData, elements, JNI_ABORT);', ''),
 'R4 pressure data released mode 0': ('jni/tp_pressure.cc', 'env->ReleaseIntArrayElements(rawData, elements, JNI_ABORT);', 'env->ReleaseIntArrayElements(rawData, elements, 0);'),
 'R5 record reader keeps characters': ('jni/factory_records.cc', 'env->ReleaseStringUTFChars(string, chars);', ''),
 'R6 Utf never releases': ('jni/jni_util.h', 'if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);', ''),
 'R7 Utf releases twice': ('jni/jni_util.h', 'if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);\n        mChars = nullptr;', 'if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);'),
 'R8 Utf releases on another object': ('jni/jni_util.h', 'if (mChars != nullptr) mEnv->ReleaseStringUTFChars(mString, mChars);', 'if (mChars != nullptr) mEnv->ReleaseStringUTFChars(nullptr, mChars);'),
 # a steady leak of about 100 KB per heap batch (10,000 calls of the signature native per batch)
 'H1 leak 10 KB every 1000th signature call': ('jni/factory_commands.cc', '    env->ReleaseByteArrayElements(data, elements, 0);\n', '    env->ReleaseByteArrayElements(data, elements, 0);\n    static int calls = 0;\n    static std::vector<void*> kept;\n    if (++calls % 1000 == 0) kept.push_back(std::malloc(10240));\n'),
 # handle stores and loads without the handle lock
 'T1 unlocked handle load': ('hal/service_registry.cc', '    std::lock_guard<std::mutex> lock(g_handleLock);\n    return Slot<S>();', '    return Slot<S>();'),
 'T2 unlocked handle store on connect': ('hal/service_registry.cc', '        std::lock_guard<std::mutex> lock(g_handleLock);\n        previous = Slot<S>();', '        previous = Slot<S>();'),
 'T3 unlocked handle store on release': ('hal/service_registry.h', '    std::lock_guard<std::mutex> guard(lock);\n    handle = nullptr;', '    handle = nullptr;'),
 # handling of failed JNI calls
 'F1 Utf leaves OOM pending': ('jni/jni_util.h', 'if (s != nullptr && mChars == nullptr) env->ExceptionClear();', ''),
 'F2 NewJString leaves OOM pending': ('jni/jni_util.h', '    if (string != nullptr) return string;\n    env->ExceptionClear();\n', '    if (string != nullptr) return string;\n'),
 'F3 NewJString fallback leaves OOM pending': ('jni/jni_util.h', '    if (string == nullptr) env->ExceptionClear();\n', ''),
 'F4 NewJString no handling': ('jni/jni_util.h', '''    if (string != nullptr) return string;
    env->ExceptionClear();
    KXLOGE("%s: %s fail, NewStringUTF failed", function);
    string = env->NewStringUTF("");
    if (string == nullptr) env->ExceptionClear();
''', '    (void)function;\n'),
 'F5 signature bytes: OOM left pending': ('jni/factory_commands.cc', '        env->ExceptionClear();  // out of memory: the caller gets the failure value, not a throw\n', ''),
 'F6 signature bytes: no null test': ('jni/factory_commands.cc', '''    if (elements == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets the failure value, not a throw
        KXLOGE("%s: GetVerifySignatureResult fail, data elements are null");
        return -1;
    }
''', ''),
 'F7 pressure data: OOM left pending': ('jni/tp_pressure.cc', '        env->ExceptionClear();  // out of memory: the caller gets -1, never an exception\n', ''),
 'F8 pressure data: no null test': ('jni/tp_pressure.cc', '''    if (elements == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets -1, never an exception
        KXLOGE("%s: SetApPressureCalibrationExtern fail, g_kxSensors is null");
        return -1;
    }
''', ''),
 'F9 record text: OOM left pending': ('jni/factory_records.cc', '        env->ExceptionClear();  // out of memory: the field reads as empty\n', ''),
 'F10 record text: no null test': ('jni/factory_records.cc', '''    if (chars == nullptr) {
        env->ExceptionClear();  // out of memory: the field reads as empty
        env->DeleteLocalRef(string);
        KXLOGE("%s: GetBigDataValueString fail, string value is null");
        return kxmmi::EmptyText();
    }
''', ''),
 'F11 NewIntArray: OOM left pending': ('jni/sensor_parameters.cc', '        env->ExceptionClear();  // out of memory: the caller gets null, never an exception\n', ''),
 'F12 NewIntArray: no null test': ('jni/sensor_parameters.cc', '''    if (parameters == nullptr) {
        env->ExceptionClear();  // out of memory: the caller gets null, never an exception
        KXLOGE("%s: HandleAmbientLightParameter fail, NewIntArray failed");
        return nullptr;
    }
''', ''),
 'F13 unreadable string taken as present': ('jni/jni_util.h', '        if (mChars != nullptr) return true;\n', '        if (mChars != nullptr || mString != nullptr) return true;\n'),
 'F14 unreadable record text: no line': ('jni/factory_records.cc', '        KXLOGE("%s: GetBigDataValueString fail, string value is null");\n', ''),
}



def main(argv):
    if argv[1:2] in (['-h'], ['--help']):
        print(__doc__.strip())
        return 0
    if argv[1:2] == ['--list']:
        for key in MUTANTS:
            print(key)
        return 0
    if len(argv) < 4:
        print('mutants: needs BUILD_DIR TARGETS COMMAND [ID...]; see --help', file=sys.stderr)
        return 2
    build, targets, command = argv[1], argv[2].split(','), argv[3]
    ids = {key.split()[0]: key for key in MUTANTS}
    unknown = [i for i in argv[4:] if i not in ids]
    if unknown:
        print(f'mutants: no mutant {unknown[0]}; --list shows them', file=sys.stderr)
        return 2
    if not os.path.isdir(os.path.join(ROOT, build)):
        print(f'mutants: no build folder {build}; configure it with cmake --preset first',
              file=sys.stderr)
        return 2
    survived = 0
    for key in [ids[i] for i in argv[4:]] or list(MUTANTS):
        path, old, new = MUTANTS[key]
        full = os.path.join(ROOT, path)
        with open(full) as f:
            text = f.read()
        if text.count(old) != 1:
            print(f'{key}: the code it changes is gone from {path}; update the mutant')
            survived += 1
            continue
        print(f'mutants: {key}: building and running', file=sys.stderr, flush=True)
        shutil.copy2(full, full + '.unmutated')
        try:
            with open(full, 'w') as f:
                f.write(text.replace(old, new))
            built = subprocess.run(['cmake', '--build', build, '--target'] + targets, cwd=ROOT,
                                   capture_output=True, text=True)
            if built.returncode != 0:
                print(f'{key}: did not build\n{built.stdout[-1500:]}')
                survived += 1
                continue
            run = subprocess.run(command, shell=True, cwd=ROOT, capture_output=True, text=True)
            lines = (run.stdout + run.stderr).splitlines()
            failed = [l for l in lines if l.startswith('[  FAILED  ]') and '(' in l]
            reports = [l for l in lines if 'ThreadSanitizer' in l or 'the library broke' in l]
            if run.returncode == 0:
                survived += 1
            verdict = 'SURVIVED' if run.returncode == 0 else f'caught (exit {run.returncode})'
            print(f'{key}: {verdict}', *failed[:3], *reports[:1], sep='\n  ', flush=True)
        finally:
            shutil.move(full + '.unmutated', full)
            os.utime(full)  # newer than the mutant's objects, so the next build restores them
    subprocess.run(['cmake', '--build', build, '--target'] + targets, cwd=ROOT,
                   capture_output=True)
    print(f'mutants: {survived} survived', file=sys.stderr)
    return 1 if survived else 0


if __name__ == '__main__':
    try:
        sys.exit(main(sys.argv))
    except BrokenPipeError:  # a reader that stopped early (| head) ends the run, as for any writer
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        sys.exit(1)
