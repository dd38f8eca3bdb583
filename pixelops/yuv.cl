// YUV frames in buffers to images and back. Rows count from the top; a negative pitch says that a buffer starts with
// the bottom row. half_size: 1 where chroma has half as many columns or rows, else 0.

_Pragma("OPENCL FP_CONTRACT OFF")

    enum Storage {
        PLANAR,
        PAIRS,
        LUMA_FIRST,
        CHROMA_FIRST,
        WORDS,
        TENS
    };

size_t row_offset(int pitch, int rows, int row) { return (size_t)(pitch < 0 ? rows - 1 - row : row) * abs(pitch); }

int word_at(__global const uchar* p) { return p[0] | p[1] << 8; }

void put_word(__global uchar* p, int code) {
    p[0] = code & 255;
    p[1] = code >> 8;
}

// Sample number k of a group of six pixels, whose samples follow one another as in CHROMA_FIRST, three in 32 bits.
int ten_at(__global const uchar* group, int k) {
    __global const uchar* p = group + k / 3 * 4;
    return (word_at(p) | word_at(p + 2) << 16) >> k % 3 * 10 & 1023;
}

// offsets: of luma and chroma, then the sizes of their ranges, in codes. inverse: red from v, green from u, green from
// v, blue from u.
__kernel void k9b26d1400(__write_only image2d_t dst, __global const uchar* plane0, __global const uchar* plane1,
                         __global const uchar* plane2, int4 pitches, int2 size, int storage, int2 half_size,
                         float4 offsets, float4 inverse) {
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= size.x || at.y >= size.y) return; // the global size is rounded up

    const int row = at.y >> half_size.y, rows = (size.y + half_size.y) >> half_size.y, column = at.x >> half_size.x;
    plane0 += row_offset(pitches.x, size.y, at.y);
    int3 code;
    if (storage == PLANAR) {
        plane1 += row_offset(pitches.y, rows, row);
        plane2 += row_offset(pitches.z, rows, row);
        code = (int3)(plane0[at.x], plane1[column], plane2[column]);
    } else if (storage == PAIRS) {
        plane1 += row_offset(pitches.y, rows, row) + 2 * column;
        code = (int3)(plane0[at.x], plane1[0], plane1[1]);
    } else if (storage == LUMA_FIRST) {
        code = (int3)(plane0[2 * at.x], plane0[4 * column + 1], plane0[4 * column + 3]);
    } else if (storage == CHROMA_FIRST) {
        code = (int3)(plane0[2 * at.x + 1], plane0[4 * column], plane0[4 * column + 2]);
    } else if (storage == WORDS) {
        plane1 += row_offset(pitches.y, rows, row) + 4 * column;
        code = (int3)(word_at(plane0 + 2 * at.x), word_at(plane1), word_at(plane1 + 2)) >> 6;
    } else {
        plane0 += at.x / 6 * 16;
        const int x = at.x % 6, pair = x / 2 * 4;
        code = (int3)(ten_at(plane0, 2 * x + 1), ten_at(plane0, pair), ten_at(plane0, pair + 2));
    }
    const float y = (code.x - offsets.x) / offsets.z;
    const float2 uv = (convert_float2(code.yz) - offsets.y) / offsets.w;
    const float3 color = (float3)(y + inverse.x * uv.y, y + inverse.y * uv.x + inverse.z * uv.y, y + inverse.w * uv.x);
    write_imagef(dst, at, (float4)(clamp(color, 0.0f, 1.0f), 1.0f));
}

// The code for a colour: the coefficients, and the offset as w.
int code_of(float4 color, float4 row, int most) {
    return (int)rint(clamp(color.x * row.x + color.y * row.y + color.z * row.z + row.w, 0.0f, (float)most));
}

// An item for each group of pixels that share their chroma or, as TENS, 16 bytes. Columns and rows beyond the edge
// repeat the last; of those, only columns are written, where they belong to a group of bytes.
__kernel void k9b26d1401(__global uchar* plane0, __global uchar* plane1, __global uchar* plane2,
                         __read_only image2d_t src, int4 pitches, int2 size, int storage, int2 half_size, int most,
                         float4 y_row, float4 u_row, float4 v_row) {
    const sampler_t nearest = CLK_NORMALIZED_COORDS_FALSE | CLK_ADDRESS_CLAMP_TO_EDGE | CLK_FILTER_NEAREST;
    const int columns = storage == TENS ? 6 : 1 + half_size.x, lines = 1 + half_size.y;
    const int2 group = (int2)(get_global_id(0), get_global_id(1)), first = group * (int2)(columns, lines);
    if (first.x >= size.x || first.y >= size.y) return;
    const int rows = (size.y + half_size.y) >> half_size.y;

    uint words[4] = {0, 0, 0, 0};
    for (int pair = 0; pair < columns; pair += 1 + half_size.x) {
        float4 sum = (float4)(0.0f);
        for (int line = 0; line < lines; ++line) {
            const size_t offset = row_offset(pitches.x, size.y, min(first.y + line, size.y - 1));
            for (int x = pair; x <= pair + half_size.x; ++x) {
                const int column = first.x + x;
                const int2 at = min((int2)(column, first.y + line), size - 1);
                const float4 color = read_imagef(src, nearest, at);
                sum += color;
                if (first.y + line >= size.y) continue;
                const int code = code_of(color, y_row, most);
                if (storage == TENS)
                    words[(2 * x + 1) / 3] |= (uint)code << (2 * x + 1) % 3 * 10;
                else if (storage == LUMA_FIRST)
                    plane0[offset + 2 * column] = code;
                else if (storage == CHROMA_FIRST)
                    plane0[offset + 2 * column + 1] = code;
                else if (column >= size.x)
                    continue;
                else if (storage == WORDS)
                    put_word(plane0 + offset + 2 * column, code << 6);
                else
                    plane0[offset + column] = code;
            }
        }
        sum /= (float)(lines * (1 + half_size.x));
        const int u = code_of(sum, u_row, most), v = code_of(sum, v_row, most);
        const size_t line0 = row_offset(pitches.x, size.y, first.y), line1 = row_offset(pitches.y, rows, group.y);
        if (storage == TENS) {
            words[2 * pair / 3] |= (uint)u << 2 * pair % 3 * 10;
            words[(2 * pair + 2) / 3] |= (uint)v << (2 * pair + 2) % 3 * 10;
        } else if (storage == PLANAR) {
            plane1[line1 + group.x] = u;
            plane2[row_offset(pitches.z, rows, group.y) + group.x] = v;
        } else if (storage == PAIRS) {
            plane1[line1 + 2 * group.x] = u;
            plane1[line1 + 2 * group.x + 1] = v;
        } else if (storage == WORDS) {
            put_word(plane1 + line1 + 4 * group.x, u << 6);
            put_word(plane1 + line1 + 4 * group.x + 2, v << 6);
        } else {
            const int lead = storage == LUMA_FIRST ? 1 : 0;
            plane0[line0 + 4 * group.x + lead] = u;
            plane0[line0 + 4 * group.x + lead + 2] = v;
        }
    }
    if (storage != TENS) return;
    plane0 += row_offset(pitches.x, size.y, first.y) + 16 * (size_t)group.x;
    for (int i = 0; i < 4; ++i) {
        put_word(plane0 + 4 * i, words[i] & 0xFFFF);
        put_word(plane0 + 4 * i + 2, words[i] >> 16);
    }
}
