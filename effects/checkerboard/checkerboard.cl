// Checkerboard; mirrors the rows and columns of the CPU, whose y counts from the top.

_Pragma("OPENCL FP_CONTRACT OFF")

int tile_at(float position, float tile)
{
    const int index = (int)(position / tile);
    return index * tile > position ? index - 1 : index;
}

// The tile whose colour leads at a position, where a boundary belongs to the tile on its right as soon as blending begins.
int column_at(float position, float tile, float blend)
{
    int index = max(tile_at(position, tile), tile_at(position - blend, tile));
    while (position >= index * tile + blend && position >= (index + 1) * tile - blend) ++index;
    return index;
}

// Bytes mix in whole codes and 1/65536, truncated; floats as they are. w is the share of b, 0..1.
float4 mixed(float4 a, float4 b, float w, int bytes)
{
    if (!bytes) return a * (1.0f - w) + b * w;
    const int4 share = (int4)((int)(w * 65536.0f + 0.5f));
    const int4 sum = convert_int4(a * 255.0f + 0.5f) * (65536 - share) + convert_int4(b * 255.0f + 0.5f) * share;
    return convert_float4(sum >> 16) / 255.0f;
}

__kernel void k273207df0(__write_only image2d_t dst, int2 size, float2 tile, float2 blend, float2 slope, float2 offset,
                         float4 color2, float4 color1)
{
    const int2 at = (int2)(get_global_id(0), get_global_id(1));
    if (at.x >= size.x || at.y >= size.y) return; // the global size is rounded up
    const int bytes = get_image_channel_data_type(dst) == CLK_UNORM_INT8;

    const float y = 0.5f - offset.y + (size.y - 1 - at.y);
    const int row = tile_at(y, tile.y);
    const float start = row * tile.y + blend.y, end = (row + 1) * tile.y - blend.y;
    const float t = (y < start ? start - y : y >= end ? y - end : 0.0f) * slope.y;
    const float4 first = mixed(color1, color2, t, bytes), second = mixed(color2, color1, t, bytes);

    const float x = 0.5f - offset.x + at.x;
    const int column = column_at(x, tile.x, blend.x);
    const float u = max(column * tile.x + blend.x - x, 0.0f) * slope.x;
    const int even = ((column + row) & 1) == 0;
    write_imagef(dst, at, mixed(even ? first : second, even ? second : first, u, bytes));
}
