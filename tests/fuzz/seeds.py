"""seeds.py raster|arguments FOLDER: writes small inputs from which the fuzzer starts."""
import itertools
import pathlib
import sys

from osgeo import gdal

gdal.UseExceptions()
TYPES = ["Byte", "UInt16", "Int32", "Float32", "Float64", "CInt16", "CFloat32"]
TIFF_OPTIONS = [[], ["TILED=YES", "BLOCKXSIZE=16", "BLOCKYSIZE=16", "COMPRESS=DEFLATE"],
                ["BIGTIFF=YES", "COMPRESS=LZW", "PREDICTOR=2"], ["SPARSE_OK=TRUE"],
                ["COMPRESS=PACKBITS", "ENDIANNESS=BIG"], ["PIXELTYPE=SIGNEDBYTE"]]
WORDS = ["""--help""", """--version""", """multilook IN out.tif --looks 2x3 --overwrite -q""",
         """multilook IN out.tif --looks=4x36 --picture out.png --co COMPRESS=DEFLATE --progress""",
         """detect IN out.tif --amplitude --co TILED=YES --co BIGTIFF=YES""",
         """detect IN ./out --intensity --picture p""", """spectrum IN s.tif --centred --inverse""",
         """spectrum IN -- -s.tif""", """info IN --decibel -q""", """info IN --amplitude""",
         """stats IN --json""", """info IN --json""", """multilook IN o --looks 2x2 --nodata skip --to-db""",
         """multilook IN o --square --looks 9 --spacing 2x14 --incidence 35 --from-db""", """stats --help""", """detect nothing.tif --co=X"""]


def content(name):
    file = gdal.VSIFOpenL(name, "rb")
    return gdal.VSIFReadL(1, gdal.VSIStatL(name).size, file)


def dataset(kind, name, pixel_type, options):
    """Two bands with all of the description that a raster can have."""
    made = gdal.GetDriverByName(kind).Create(name, 20, 18, 2, gdal.GetDataTypeByName(pixel_type),
                                             options)
    if kind != "VRT":
        made.GetRasterBand(1).WriteRaster(0, 0, 20, 9, bytes(range(180)), 20, 9, gdal.GDT_Byte)
    made.SetGeoTransform([100, 10, 0, 200, 0, -10])
    made.GetRasterBand(1).SetNoDataValue(7)
    made.SetMetadata({"LINE_OFF": "9", "SAMP_OFF": "1", "LINE_SCALE": "2", "SAMP_SCALE": "1",
                      "LAT_OFF": "1", "LONG_OFF": "1", "HEIGHT_OFF": "1", "LAT_SCALE": "1",
                      "LONG_SCALE": "1", "HEIGHT_SCALE": "1", "LINE_NUM_COEFF": "1 " * 20,
                      "LINE_DEN_COEFF": "1 " * 20, "SAMP_NUM_COEFF": "1 " * 20,
                      "SAMP_DEN_COEFF": "1 " * 20}, "RPC" if kind != "ENVI" else "")
    return made


def rasters():
    for pixel_type, options in itertools.product(TYPES, TIFF_OPTIONS):
        if options != ["PIXELTYPE=SIGNEDBYTE"] or pixel_type == "Byte":
            dataset("GTiff", "/vsimem/a.tif", pixel_type, options)
            yield content("/vsimem/a.tif")
    for pixel_type, order in itertools.product(TYPES, ["BSQ", "BIL", "BIP"]):
        dataset("ENVI", "/vsimem/a.img", pixel_type, ["INTERLEAVE=" + order])
        yield content("/vsimem/a.hdr") + b"\n--\n" + content("/vsimem/a.img")
    for pixel_type in TYPES:
        dataset("VRT", "/vsimem/a.vrt", pixel_type, [])
        yield content("/vsimem/a.vrt")
    band = '<VRTDataset rasterXSize="9" rasterYSize="9"><VRTRasterBand dataType="Float32" band="1"'
    file = ' relativeToVRT="1">{}</SourceFilename>'
    yield (f'{band} subClass="VRTRawRasterBand"><SourceFilename{file.format("in.img")}<ImageOffset>3</ImageOffset>'
           '<PixelOffset>4</PixelOffset><LineOffset>36</LineOffset><ByteOrder>MSB</ByteOrder>'
           '</VRTRasterBand></VRTDataset>').encode()
    yield (f'{band}><ComplexSource><SourceFilename{file.format("other.tif")}<SrcRect xOff="0" yOff="0" xSize="5" '
           'ySize="5"/><DstRect xOff="2" yOff="2" xSize="9" ySize="3"/><ScaleRatio>2</ScaleRatio>'
           '</ComplexSource></VRTRasterBand></VRTDataset>').encode()


def arguments():
    return ("\n".join(w.split()).replace("IN", "/vsimem/in.tif").encode() for w in WORDS)


folder = pathlib.Path(sys.argv[2])
folder.mkdir(parents=True, exist_ok=True)
for number, seed in enumerate(rasters() if sys.argv[1] == "raster" else arguments()):
    (folder / str(number)).write_bytes(seed)
