"""What the kernel packer must refuse, and what must survive it."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

PACKER = pathlib.Path(__file__).parent.parent / "tools" / "pack_kernels.py"


def expand(source):
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "kernel.cl"
        file.write_text(source)
        return subprocess.run([sys.executable, PACKER, "--expand", file], capture_output=True, text=True)


class Packer(unittest.TestCase):
    def test_keeps_every_token_and_drops_comments(self):
        source = '_Pragma("OPENCL FP_CONTRACT OFF") /* a\n b */ x+=1.5e-3f-.5f; // c\ny<<=2; a->b ? c[0] : "a \\" b";'
        words = '_Pragma ( "OPENCL FP_CONTRACT OFF" ) x += 1.5e-3f - .5f ; y <<= 2 ; a -> b ? c [ 0 ] : "a \\" b" ;'
        self.assertEqual(expand(source).stdout.strip(), words)

    def test_refuses_what_one_line_cannot_hold(self):
        for source in ("#define A 1\nint a;", "int a; \\\n int b;", 'const char* a = "open;', "", "// nothing"):
            result = expand(source)
            self.assertNotEqual(result.returncode, 0, source)
            self.assertIn("kernel.cl", result.stderr)


unittest.main()
